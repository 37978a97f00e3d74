#ifndef VELSCORE_PYTHON_OPTIONS_H
#define VELSCORE_PYTHON_OPTIONS_H

#include <string>
#include <vector>

#include "python/extension/pythonobjects.h"

#include "capi/include/velscore.h"

namespace velscore_python {

/// Texts as the library takes them: pointers that stand as long as this.
class Texts {
public:
    /// Of an iterable of str; `what` says of it in an error. Throws PythonError.
    void Take(PyObject* texts, const char* what);
    void Add(std::string text);
    const char* const* Pointers();
    size_t Count() const { return texts_.size(); }

private:
    std::vector<std::string> texts_;
    std::vector<const char*> pointers_;
};

/// A document and how it is read, out of the arguments (text, name, as_is, allow). Throws
/// PythonError.
class DocumentArguments {
public:
    explicit DocumentArguments(PyObject* arguments);
    DocumentArguments(const DocumentArguments&) = delete;
    DocumentArguments& operator=(const DocumentArguments&) = delete;
    const char* Text() const { return text_; }
    size_t Size() const { return static_cast<size_t>(size_); }
    const velscore_options* Options() const { return &options_; }

private:
    const char* text_ = nullptr;
    Py_ssize_t size_ = 0;
    std::string name_;
    Texts allow_;
    velscore_options options_ = VELSCORE_OPTIONS_INIT;
};

/// The options of a score out of a dict, whose keys are those of the structure; None and what isn't
/// there is the default. `map` is a dict of fields to columns. Throws PythonError.
class ScoreOptions {
public:
    explicit ScoreOptions(PyObject* dict);
    ScoreOptions(const ScoreOptions&) = delete;
    ScoreOptions& operator=(const ScoreOptions&) = delete;
    const velscore_score_options* Get() const { return &options_; }
    /// Of explanations; the stream is the caller's until it is taken over.
    void SetBaseline(ArrowArrayStream* tables) { options_.baseline = tables; }

private:
    velscore_score_options options_ = VELSCORE_SCORE_OPTIONS_INIT;
    size_t top_ = 0;
    Texts keep_;
    Texts columns_;
    Texts missing_;
    Texts mapFields_;
    Texts mapColumns_;
    std::string nan_;
    std::string policy_;
};

}  // namespace velscore_python

#endif
