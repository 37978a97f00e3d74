#ifndef VELSCORE_TESTS_READERS_LEGACYPARTS_H
#define VELSCORE_TESTS_READERS_LEGACYPARTS_H

#include <initializer_list>
#include <string>

namespace MCVelscore_850 {

/// A variable of the older form's dictionary.
inline std::string OldVariable(const std::string& name, const std::string& storage,
                               const std::string& level, const std::string& content = "")
{
    return "<variable name='" + name + "' storage-type='" + storage + "' measurement-level='" +
           level + "'>" + content + "</variable>\n";
}

inline std::string OldCategories(std::initializer_list<const char*> texts)
{
    std::string content = "<categories>";
    for (const char* text : texts) content += std::string("<category value='") + text + "'/>";
    return content + "</categories>";
}

/// The parts of a document in the older form; a test changes the ones that it is about. As they
/// stand, the linear regression y = 1 + 2 x + 3 w with 5 degrees of freedom, its constant first.
struct LegacyParts {
    std::string root = "zelt-ml version='1.0'";
    std::string variables = OldVariable("y", "NUMERIC", "CONTINUOUS") +
                            OldVariable("x", "NUMERIC", "CONTINUOUS") +
                            OldVariable("w", "NUMERIC", "CONTINUOUS");
    std::string head = "target-variable-name='y' model-type='regression' model-df='5'";
    std::string parameters =
        "<parameter name='(Constant)'/><parameter name='bx'/><parameter name='bw'/>";
    std::string factors;
    std::string covariates = "<predictor name='x'/><predictor name='w'/>";
    std::string betas =
        "<p-cell parameter-name='(Constant)' beta='1' df='1'/>\n"
        "<p-cell parameter-name='bx' beta='2' df='1'/>\n"
        "<p-cell parameter-name='bw' beta='3' df='1'/>";
    std::string cells =
        "<pp-cell parameter-name='bx' predictor-name='x' value='1'/>\n"
        "<pp-cell parameter-name='bw' predictor-name='w' value='1'/>";
    std::string covariances;  // without an element when empty
    std::string tail;         // further children of the model

    std::string Text() const
    {
        return "<" + root + ">\n<dictionary>" + variables + "</dictionary>\n<model>" +
               "<regression-model " + head + ">\n<parameter-list>" + parameters +
               "</parameter-list>\n" + Section("factor-list", factors) +
               Section("covariate-list", covariates) + "<p-table>" + betas + "</p-table>\n" +
               Section("pp-matrix", cells) + Section("pcov-matrix", covariances) + tail +
               "</regression-model></model></" + root.substr(0, root.find(' ')) + ">";
    }

private:
    static std::string Section(const std::string& tag, const std::string& content)
    {
        return content.empty() ? "" : "<" + tag + ">" + content + "</" + tag + ">\n";
    }
};

/// A multinomial logistic model of a target c (a, b, d) with a text factor f (u, v) and a covariate
/// x; d has no betas:
///
///     a   0.5 + 1 [f = v] - 0.25 x
///     b   -1 + 2 [f = v] x^2
inline LegacyParts MultinomialParts()
{
    LegacyParts parts;
    parts.variables = OldVariable("c", "STRING", "NOMINAL", OldCategories({"a", "b", "d"})) +
                      OldVariable("f", "STRING", "NOMINAL", OldCategories({"u", "v"})) +
                      OldVariable("x", "NUMERIC", "CONTINUOUS");
    parts.head = "target-variable-name='c' model-type='multinomial-logistic'";
    parts.parameters =
        "<parameter name='(Constant)'/><parameter name='pf'/><parameter name='px'/>"
        "<parameter name='pfx'/>";
    parts.factors = "<predictor name='f'/>";
    parts.covariates = "<predictor name='x'/>";
    parts.betas =
        "<p-cell target-category='a' parameter-name='(Constant)' beta='0.5' df='1'/>\n"
        "<p-cell target-category='a' parameter-name='pf' beta='1' df='1'/>\n"
        "<p-cell target-category='a' parameter-name='px' beta='-0.25' df='1'/>\n"
        "<p-cell target-category='b' parameter-name='(Constant)' beta='-1' df='1'/>\n"
        "<p-cell target-category='b' parameter-name='pfx' beta='2' df='1'/>";
    parts.cells =
        "<pp-cell parameter-name='pf' predictor-name='f' value='v'/>\n"
        "<pp-cell parameter-name='px' predictor-name='x' value='1'/>\n"
        "<pp-cell parameter-name='pfx' predictor-name='f' value='v'/>\n"
        "<pp-cell parameter-name='pfx' predictor-name='x' value='2'/>";
    return parts;
}

/// A conditional logistic model of a target c (case, control) with a numeric factor g (1, 2) and a
/// covariate x: 0.75 x - 1.5 [g = 2].
inline LegacyParts ConditionalParts()
{
    LegacyParts parts;
    parts.variables = OldVariable("c", "STRING", "NOMINAL", OldCategories({"case", "control"})) +
                      OldVariable("g", "NUMERIC", "NOMINAL", OldCategories({"1", "2"})) +
                      OldVariable("x", "NUMERIC", "CONTINUOUS");
    parts.head = "target-variable-name='c' model-type='conditional-logistic'";
    parts.parameters = "<parameter name='px'/><parameter name='pg'/>";
    parts.factors = "<predictor name='g'/>";
    parts.covariates = "<predictor name='x'/>";
    parts.betas =
        "<p-cell target-category='case' parameter-name='px' beta='0.75' df='1'/>\n"
        "<p-cell target-category='case' parameter-name='pg' beta='-1.5' df='1'/>";
    parts.cells =
        "<pp-cell parameter-name='px' predictor-name='x' value='1'/>\n"
        "<pp-cell parameter-name='pg' predictor-name='g' value='2'/>";
    return parts;
}

}  // namespace MCVelscore_850

#endif
