#ifndef VELSCORE_HOST_VARIABLES_SCOREDICTIONARY_H
#define VELSCORE_HOST_VARIABLES_SCOREDICTIONARY_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

/// Variables by name, in the order in which they were added.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Owner   the dictionary owns its variables.
class VELHOST_API ScoreDictionary {
public:
    virtual ~ScoreDictionary();
    /// Takes `var` over. A name that is there already keeps its variable, `var` is released, and
    /// the answer is false.
    virtual bool AddVar(const std::string& name, ScoreDictVar* var) = 0;
    /// The variable, null when absent.
    virtual ScoreDictVar* GetVar(const std::string& name) const = 0;
    virtual int GetVarCount() const = 0;
    virtual std::vector<ScoreDictVar*> GetVars() const = 0;
};

/// A dictionary in memory.
class VELHOST_API BaseDictionary : public ScoreDictionary {
public:
    BaseDictionary();
    BaseDictionary(const BaseDictionary&) = delete;
    BaseDictionary& operator=(const BaseDictionary&) = delete;
    ~BaseDictionary() override;
    bool AddVar(const std::string& name, ScoreDictVar* var) override;
    ScoreDictVar* GetVar(const std::string& name) const override;
    int GetVarCount() const override { return static_cast<int>(vars_.size()); }
    std::vector<ScoreDictVar*> GetVars() const override;

private:
    std::vector<std::unique_ptr<ScoreDictVar>> vars_;
    std::unordered_map<std::string, ScoreDictVar*> byName_;
};

}  // namespace MCVelscore_850

#endif
