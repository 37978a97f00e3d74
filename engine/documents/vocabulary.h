#ifndef VELSCORE_ENGINE_DOCUMENTS_VOCABULARY_H
#define VELSCORE_ENGINE_DOCUMENTS_VOCABULARY_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// What depends on a name of the vocabulary, and so what a misspelling of it would change.
enum class Effect {
    None,    ///< nothing that is computed
    Output,  ///< columns of the document's own Output section
    Score
};

/// The first version of the standard whose documents are read, and the last one.
inline constexpr double kFirstVersion = 3.0;
inline constexpr double kLastVersion = 4.4;
/// The one of the older form, before any point.
inline constexpr std::string_view kOlderVersion = "1";

/// An attribute of an element.
struct AttributeWord {
    std::string_view name;
    Effect effect = Effect::None;
    /// Those that it may have, compared as written; none where any text will do. Numbers aren't
    /// told apart here: who reads one refuses what is none.
    std::span<const std::string_view> words{};
    double since = kFirstVersion;
};

/// An element that may stand in another.
struct ChildWord {
    enum Count {
        One,        ///< at most one
        Many,       ///< any number
        Each,       ///< at most one for each text of its key
        Model,      ///< at most one of all that are so
        Expression  ///< likewise
    };
    std::string_view tag;
    Count count = One;
    /// The attribute by which several are told apart; with Many a text that comes again is odd, and
    /// no more.
    std::string_view key{};
};

/// An element with what may stand on it and in it. An Extension may stand in each.
// Fields in the order in which rows are read; there are some eighty.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct ElementWord {
    std::string_view tag;
    Effect effect = Effect::None;
    std::span<const AttributeWord> attributes{};
    std::span<const ChildWord> children{};
    /// True where whatever stands within is sound; where no attributes are listed, on it too.
    bool isOpen = false;
    double since = kFirstVersion;
};

/// The elements that the published form has around a GeneralRegressionModel, in the versions that
/// are read, with those that this system's reader takes besides: of the document and its fields,
/// and of the model.
std::span<const ElementWord> FieldVocabulary();
std::span<const ElementWord> ModelVocabulary();
/// A RegressionModel and what it alone has.
std::span<const ElementWord> RegressionVocabulary();
/// The elements of the older form (root "zelt-ml").
std::span<const ElementWord> OlderVocabulary();

/// The elements of one form.
std::vector<const ElementWord*> Vocabulary(bool older);

/// The element of the published form with that tag; null for none.
const ElementWord* FindElementWord(std::string_view tag);

/// The words that an attribute of an element, of either form, may have; none where any text will
/// do, and for what the vocabulary doesn't have.
std::span<const std::string_view> WordsOf(std::string_view element, std::string_view attribute);

/// True for a version of the standard that is read; versions are numbers.
bool IsKnownVersion(double version);
/// The version that a namespace of the standard names: "4.4" of ".../PMML-4_4"; empty for any
/// other.
std::string VersionInNamespace(std::string_view uri);
/// True for a namespace of the standard, of whatever version.
bool IsPmmlNamespace(std::string_view uri);

}  // namespace MCVelscore_850

#endif
