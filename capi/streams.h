#ifndef VELSCORE_CAPI_STREAMS_H
#define VELSCORE_CAPI_STREAMS_H

#include <memory>
#include <optional>

#include "engine/tables/arrowdata.h"

namespace MCVelscore_850::capi {

/// What a stream that is handed out gives, table after table.
class TableSourceStream {
public:
    virtual ~TableSourceStream();
    virtual ArrowOwner<ArrowSchema> Schema() const = 0;
    /// Nothing at the end.
    virtual std::optional<ArrowOwner<ArrowArray>> Next() = 0;
};

/// Hands it out as a stream of the C interface: an exception is a code there, with its text as the
/// last error, and stands: each further call answers it again.
void ExportStream(std::unique_ptr<TableSourceStream> tables, ArrowArrayStream& out);

/// Somebody else's stream, taken over.
///
/// Errors  Failure (kArrowStructure) for a stream that is released or lacks a function;
/// kArrowStream
///         with the producer's own text.
class GivenStream {
public:
    explicit GivenStream(ArrowArrayStream& stream);

    ArrowOwner<ArrowSchema> Schema();
    /// Nothing at the end.
    std::optional<ArrowOwner<ArrowArray>> Next();

private:
    [[noreturn]] void Refuse(int code);

    ArrowOwner<ArrowArrayStream> stream_;
};

}  // namespace MCVelscore_850::capi

#endif
