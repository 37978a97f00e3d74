#include "capi/calls.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <new>
#include <span>
#include <utility>

#include <fmt/format.h>

#include "engine/documents/loadedmodel.h"
#include "host/messages/messages.h"

namespace MCVelscore_850::capi {

namespace {

constexpr size_t kErrorSize = VELSCORE_SIZE_TO(velscore_error, column);

int FaultOf(FailureKind kind)
{
    switch (kind) {
        case FailureKind::Usage: return VELSCORE_FAULT_CALL;
        case FailureKind::Document: return VELSCORE_FAULT_DOCUMENT;
        case FailureKind::Cases: return VELSCORE_FAULT_TABLE;
        case FailureKind::Output:
        case FailureKind::Plugin: break;
    }
    return VELSCORE_FAULT_OTHER;
}

char* CopyOf(const char* text) noexcept
{
    const size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    if (copy != nullptr) std::memcpy(copy, text, size);
    return copy;
}

void SetText(char*& text, const char* to) noexcept
{
    if (to != nullptr && *to != '\0') text = CopyOf(to);
}
void SetText(char*& text, const std::string& to) noexcept { SetText(text, to.c_str()); }

// Refusals of the document's bytes, which tell file, line and column as their first arguments.
constexpr int kWithPlace[] = {kNotWellFormed, kDoctype,         kTooDeep,     kTooManyAttributes,
                              kTokenTooLong,  kTooManyElements, kTextTooLong, kTooManyNames};

// Which arguments of a table's failures are its row and its column, counted from 0; kNone is none.
constexpr size_t kNone = static_cast<size_t>(-1);
struct TablePlace {
    int code;
    size_t row;
    size_t field;
};
constexpr TablePlace kTablePlaces[] = {{kRowNotScored, 0, 2},        {kMissingColumn, kNone, 1},
                                       {kDuplicateColumn, kNone, 1}, {kUnknownKeptColumn, kNone, 0},
                                       {kArrowType, kNone, 0},       {kRowLength, 1, kNone},
                                       {kUnclosedQuote, 1, kNone},   {kNulByte, 1, kNone},
                                       {kStrayQuote, 1, kNone},      {kFieldTooLong, 1, kNone},
                                       {kTableCut, 1, kNone},        {kRowTooLong, 1, kNone},
                                       {kRowEncoding, 1, kNone},     {kNoJsonObject, 1, kNone},
                                       {kNestedValue, 1, 2},         {kKeyTwice, 1, 2}};

// An error structure of a program that was built with an older header ends before these.
bool HasTablePlace(const velscore_error& error)
{
    return error.size >= VELSCORE_SIZE_TO(velscore_error, row);
}

unsigned long NumberOf(const std::string& text)
{
    unsigned long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

void TellTablePlace(const Failure& failure, velscore_error& error)
{
    const auto* const found =
        std::find_if(std::begin(kTablePlaces), std::end(kTablePlaces),
                     [&](const TablePlace& each) { return each.code == failure.Code(); });
    if (found == std::end(kTablePlaces) || !HasTablePlace(error)) return;
    const auto& arguments = failure.Arguments();
    if (found->row < arguments.size()) error.row = NumberOf(arguments[found->row]);
    if (found->field < arguments.size()) SetText(error.field, arguments[found->field]);
}

void TellPlace(const Failure& failure, const Place& place, velscore_error& error)
{
    TellTablePlace(failure, error);
    if (const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure)) {
        SetText(error.file, refusal->File());
        SetText(error.element, refusal->ElementPath());
        error.line = refusal->Line();
        error.column = refusal->Column();
        return;
    }
    const auto& arguments = failure.Arguments();
    if (failure.Kind() == FailureKind::Document) {
        SetText(error.file, place.document);
        const bool hasPlace = std::find(std::begin(kWithPlace), std::end(kWithPlace),
                                        failure.Code()) != std::end(kWithPlace);
        if (hasPlace && arguments.size() > 2) {
            error.line = NumberOf(arguments[1]);
            error.column = NumberOf(arguments[2]);
        }
    } else if (failure.Kind() == FailureKind::Cases) {
        SetText(error.file, place.table);
    }
}

// Of what isn't a Failure.
int TellOther(velscore_error* error, int code, const std::string& argument)
{
    const Failure failure(FailureKind::Plugin, code, {argument});
    if (error != nullptr) {
        error->text = CopyOf(failure.what());
        SetText(error->remedy, failure.Remedy());
    }
    return code;
}

int TellAny(velscore_error* error, const Place& place)
{
    try {
        throw;
    } catch (const Failure& failure) {
        if (error != nullptr) {
            error->code = failure.Code();
            error->fault = FaultOf(failure.Kind());
            error->text = CopyOf(failure.what());
            SetText(error->remedy, failure.Remedy());
            TellPlace(failure, place, *error);
        }
        return failure.Code();
    } catch (const std::bad_alloc&) {
        return TellOther(error, kOutOfMemory, "what was asked for");
    } catch (const std::exception& defect) {
        return TellOther(error, kDefect, defect.what());
    } catch (...) {
        return TellOther(error, kDefect, "an unknown exception");
    }
}

}  // namespace

void RefuseNull(const char* argument)
{
    throw Failure(FailureKind::Usage, kNullArgument, {argument});
}

std::vector<std::string> TextsOf(const char* const* texts, size_t count, const char* name)
{
    std::vector<std::string> all;
    if (count > 0 && texts == nullptr) RefuseNull(name);
    for (const char* text : std::span(texts, count)) all.emplace_back(&Given(text, name));
    return all;
}

void CopyKnown(const void* given, size_t size, const char* name, size_t first, size_t known,
               void* copy)
{
    const auto* bytes = static_cast<const unsigned char*>(given);
    const auto refuse = [&] {
        throw Failure(FailureKind::Usage, kStructSize,
                      {name, std::to_string(size), std::to_string(known)});
    };
    if (size < first || size > kMostStructSize) refuse();
    if (size > known && std::any_of(bytes + known, bytes + size, [](auto b) { return b != 0; })) {
        refuse();
    }
    std::memcpy(copy, given, std::min(size, known));
}

int Begin(velscore_error* error) noexcept
{
    if (error == nullptr) return 0;
    if (error->size < kErrorSize) return kStructSize;
    velscore_error_clear(error);
    return 0;
}

int Tell(velscore_error* error, const Place& place) noexcept
{
    if (error != nullptr) {
        error->code = kOutOfMemory;
        error->fault = VELSCORE_FAULT_OTHER;
    }
    try {
        const int code = TellAny(error, place);
        if (error != nullptr) error->code = code;
        return code;
    } catch (...) {  // no memory to tell it
        return error == nullptr ? kOutOfMemory : error->code;
    }
}

char* NewText(const std::string& text)
{
    char* copy = CopyOf(text.c_str());
    if (copy == nullptr) throw std::bad_alloc();
    return copy;
}

Told TextOf(std::exception_ptr failure)
{
    velscore_error error = VELSCORE_ERROR_INIT;
    try {
        std::rethrow_exception(std::move(failure));
    } catch (...) {
        Tell(&error, {});
    }
    Told told{error.code, error.text == nullptr ? "" : error.text};
    told.text += fmt::format(" [{}]", error.code);
    if (error.remedy != nullptr) told.text.append(" ").append(error.remedy);
    velscore_error_clear(&error);
    return told;
}

}  // namespace MCVelscore_850::capi

void velscore_error_clear(velscore_error* error)
{
    if (error == nullptr) return;
    for (char** text : {&error->text, &error->remedy, &error->file, &error->element}) {
        std::free(*text);
        *text = nullptr;
    }
    error->code = 0;
    error->fault = VELSCORE_FAULT_NONE;
    error->line = 0;
    error->column = 0;
    if (!MCVelscore_850::capi::HasTablePlace(*error)) return;
    std::free(error->field);
    error->field = nullptr;
    error->row = 0;
}

void velscore_free(char* text) { std::free(text); }
