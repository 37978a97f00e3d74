#ifndef VELSCORE_CLI_RESUMENOTE_H
#define VELSCORE_CLI_RESUMENOTE_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "engine/scoring/scoringsession.h"

namespace MCVelscore_850 {

class LoadedModel;
struct ScoreArguments;

/// Where an interrupted run can go on: a file beside its output, "OUTPUT.resume", with what the run
/// was of and how far it is. It is there while the run is under way, and stays when it ends early.
///
/// Same run  A note fits a run of the same version, document (SHA-256), plug-in that was named,
///           tables, one of a baseline among them (names, sizes, SHA-256 of the first and the last
///           64 KiB), and options, as far as the output depends on them.
/// Whole     A note is written over in one piece, so that a killed run leaves one that can be read.
///           It ends with its own SHA-256: one that only a part of was kept is none.
/// Bytes     Names and texts may be in any encoding.
class ResumeNote {
public:
    /// Throws Failure of kind Cases for a table that can't be read.
    ResumeNote(const ScoreArguments& arguments, const std::vector<std::string>& tables,
               const ScoringOptions& options, const LoadedModel& model);
    ResumeNote(const ResumeNote&) = delete;
    ResumeNote& operator=(const ResumeNote&) = delete;
    ~ResumeNote();

    /// True where there is a note, and what it was written for is under `position`. Throws Failure
    /// of kind Usage (kOtherRun) for a note of another run, and of kind Cases for one that can't be
    /// read.
    bool Load(RunPosition& position) const;
    /// Writes how far the run is. A note that can't be written is let go: it is the next run's
    /// loss.
    void Save(const RunPosition& position);
    /// Takes it away: once the output is whole it would mislead.
    void Remove();
    /// Takes it away if this run has written it: there are no rows to go on with.
    void TakeBack()
    {
        if (IsSaved()) Remove();
    }

    /// This run has written it.
    bool IsSaved() const { return descriptor_ >= 0; }

private:
    std::string path_;
    nlohmann::ordered_json run_;  ///< what the run is of
    int descriptor_ = -1;
};

}  // namespace MCVelscore_850

#endif
