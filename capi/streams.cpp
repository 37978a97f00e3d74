#include "capi/streams.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include <fmt/format.h>

#include "capi/calls.h"
#include "engine/tables/arrowvalues.h"
#include "host/messages/messages.h"

namespace MCVelscore_850::capi {

namespace {

const std::string kStream = "the stream";

// What a stream that was handed out points to.
struct Exported {
    std::unique_ptr<TableSourceStream> tables;
    int error = 0;  ///< of errno.h; what is answered from the first failure on
    std::string text{};
};

Exported& Of(ArrowArrayStream* stream) { return *static_cast<Exported*>(stream->private_data); }

template <class Function>
int Answer(Exported& exported, Function function) noexcept
{
    if (exported.error != 0) return exported.error;
    try {
        function();
        return 0;
    } catch (...) {
        exported.error = EINVAL;
        try {
            const Told told = TextOf(std::current_exception());
            if (told.code == kOutOfMemory) exported.error = ENOMEM;
            exported.text = told.text;
        } catch (...) {
            exported.error = ENOMEM;
        }
        return exported.error;
    }
}

int GetSchema(ArrowArrayStream* stream, ArrowSchema* out)
{
    Exported& exported = Of(stream);
    return Answer(exported, [&] { exported.tables->Schema().MoveTo(*out); });
}

int GetNext(ArrowArrayStream* stream, ArrowArray* out)
{
    Exported& exported = Of(stream);
    return Answer(exported, [&] {
        std::optional<ArrowOwner<ArrowArray>> table = exported.tables->Next();
        if (!table) table.emplace();  // released: the end
        table->MoveTo(*out);
    });
}

const char* GetLastError(ArrowArrayStream* stream)
{
    const Exported& exported = Of(stream);
    return exported.error == 0 ? nullptr : exported.text.c_str();
}

void Release(ArrowArrayStream* stream)
{
    delete &Of(stream);
    stream->release = nullptr;
}

}  // namespace

TableSourceStream::~TableSourceStream() = default;

void ExportStream(std::unique_ptr<TableSourceStream> tables, ArrowArrayStream& out)
{
    auto exported = std::make_unique<Exported>(Exported{std::move(tables)});
    out = {GetSchema, GetNext, GetLastError, Release, exported.release()};
}

GivenStream::GivenStream(ArrowArrayStream& stream)
{
    if (stream.release == nullptr) RefuseArrow(kStream, "it was released");
    stream_ = ArrowOwner(stream);
    if (stream_->get_schema == nullptr || stream_->get_next == nullptr) {
        RefuseArrow(kStream, "it lacks get_schema or get_next");
    }
}

ArrowOwner<ArrowSchema> GivenStream::Schema()
{
    ArrowSchema schema{};
    const int code = stream_->get_schema(stream_.Get(), &schema);
    if (code != 0) Refuse(code);
    if (schema.release == nullptr) RefuseArrow(kStream, "its schema was released");
    return ArrowOwner(schema);
}

std::optional<ArrowOwner<ArrowArray>> GivenStream::Next()
{
    ArrowArray table{};
    const int code = stream_->get_next(stream_.Get(), &table);
    if (code != 0) Refuse(code);
    if (table.release == nullptr) return std::nullopt;
    return ArrowOwner(table);
}

void GivenStream::Refuse(int code)
{
    const char* text =
        stream_->get_last_error == nullptr ? nullptr : stream_->get_last_error(stream_.Get());
    throw Failure(
        FailureKind::Cases, kArrowStream,
        {text == nullptr ? fmt::format("error {}, {}", code, std::strerror(code)) : text});
}

}  // namespace MCVelscore_850::capi
