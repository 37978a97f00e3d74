#ifndef VELSCORE_HOST_MODEL_VERSIONINFO_H
#define VELSCORE_HOST_MODEL_VERSIONINFO_H

#include <string>

#include "host/export.h"

namespace MCVelscore_850 {

/// What a model says of the document version it came from.
class VELHOST_API ScoreVersionInfo {
public:
    virtual ~ScoreVersionInfo();
    virtual const std::string& GetVersion() const = 0;
};

/// The version attribute of a document, as written. A model owns the one it is given.
class VELHOST_API VersionInfo final : public ScoreVersionInfo {
public:
    explicit VersionInfo(const std::string& version) : version_(version) {}
    ~VersionInfo() override;
    const std::string& GetVersion() const override { return version_; }

private:
    std::string version_;
};

}  // namespace MCVelscore_850

#endif
