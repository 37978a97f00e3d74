#ifndef VELSCORE_TESTS_FUZZ_DRAWNPARTS_H
#define VELSCORE_TESTS_FUZZ_DRAWNPARTS_H

#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/fuzz/expressiondrawing.h"
#include "tests/fuzz/structuremutator.h"

// What drawn documents are made of, whatever their form.
namespace MCVelscore_850::fuzz {

using Texts = std::vector<std::string>;

/// What a document is drawn with.
class Draws {
public:
    explicit Draws(unsigned seed) : engine_(seed) {}

    unsigned Raw() { return static_cast<unsigned>(engine_()); }
    size_t Below(size_t count) { return engine_() % count; }
    /// One time of `count`.
    bool Seldom(size_t count) { return Below(count) == 0; }
    template <class Range>
    const auto& OneIn(const Range& range)
    {
        return *std::next(std::begin(range), static_cast<std::ptrdiff_t>(Below(std::size(range))));
    }
    /// A coefficient: mostly an ordinary one.
    std::string Number()
    {
        static constexpr std::string_view kNumbers[] = {
            "0.5", "1", "-1", "0.25", "-0.125", "2", "0.01", "-0.75", "3e-2", "1.5", "0", "-2.5"};
        return Seldom(200) ? std::string(OddValue(Raw())) : std::string(OneIn(kNumbers));
    }

private:
    std::mt19937 engine_;
};

/// A field as the dictionary declares it.
struct Field {
    std::string name;
    std::string optype;
    std::string dataType;
    Texts values{};          ///< that it lists
    Texts cells{};           ///< of cases, where it lists none
    bool isDerived = false;  ///< and stands in no dictionary

    bool IsCovariate() const { return optype == "continuous"; }
    const Texts& Cells() const { return values.empty() ? cells : values; }
};

/// What numbers and dates of cases are.
inline const Texts kNumberCells{"1", "2", "0.5", "3", "-1", "7", "40"};
inline const Texts kDateCells{"2020-01-01", "2020-01-02", "1969-07-20"};

/// Of all types; among them those that drawn expressions read.
const std::vector<Field>& Fields();

inline constexpr std::string_view kTarget = "y";
inline constexpr std::string_view kTime = "t";
inline constexpr std::string_view kStratum = "s";
inline constexpr std::string_view kOffset = "off";
inline constexpr std::string_view kTrials = "trials";

/// What is predicted.
enum class Outcome { Number, TwoCategories, Categories, OrderedCategories, Event };

/// The fields and sections of one document.
class DocumentDrawing {
protected:
    explicit DocumentDrawing(unsigned seed);

    // The target and some predictors, no field twice.
    void DrawFields(Outcome outcome);
    Field TargetOf(Outcome outcome);

    bool IsPredictor(const Field& field) const;
    std::string Category() { return draws_.OneIn(target_.values); }

    // The PMML document around a model.
    std::string Published(Node model);
    Node DataField(const Field& field);
    // Of the target and of what the model reads, each a field of the dictionary too.
    Node MiningSchema();
    Node MiningField(const Field& field);
    std::string Cell(const Field& field);

    // Derived fields in a section of the model or of the document, the first of them a predictor.
    std::optional<Node> Transformations();
    // What stands in any model in front of its own sections.
    void AddSections(Node& model, std::vector<Node> extensions = {});
    Node Output();
    Node Targets();
    // Records of some fields and of the prediction, which may well differ.
    Node Verification();

    Draws draws_;
    std::string version_;
    Field target_;
    std::vector<Field> predictors_;
    std::vector<Field> others_;  ///< that transformations alone read
    std::vector<Field> fields_;  ///< of the dictionary
    std::optional<Node> transformations_;
};

/// Whole documents, each of one form.
std::string DrawGeneralModel(unsigned seed);
std::string DrawRegressionModel(unsigned seed);
std::string DrawOlderForm(unsigned seed);

}  // namespace MCVelscore_850::fuzz

#endif
