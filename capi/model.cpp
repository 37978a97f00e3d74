#include "capi/model.h"

#include <utility>

#include "capi/calls.h"
#include "engine/documents/documentrules.h"
#include "engine/documents/plugin.h"
#include "engine/reports/checkjson.h"
#include "engine/reports/jsontext.h"
#include "engine/reports/modeljson.h"
#include "engine/reports/verificationjson.h"
#include "engine/scoring/verification.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"

// The plug-in's entry, which is linked into the library.
extern "C" MCVelscore_850::BaseTranslator* GiveMyTranslator();

namespace MCVelscore_850::capi {

namespace {

constexpr size_t kOptionsSize = VELSCORE_SIZE_TO(velscore_options, name);

std::shared_ptr<const Plugin> BuiltIn()
{
    static const auto plugin = std::make_shared<const Plugin>(GiveMyTranslator);
    return plugin;
}

Source SourceOf(const velscore_options* options)
{
    const auto known = Known(options, VELSCORE_OPTIONS_INIT, "velscore_options", kOptionsSize);
    Source source;
    source.asIs = known.as_is != 0;
    source.name = known.name == nullptr ? "document" : known.name;
    source.allowed = TextsOf(known.allow, known.allow_count, "allow");
    for (const std::string& rule : source.allowed) {
        if (const std::string why = WhyNotAllowed(rule); !why.empty()) {
            throw Failure(FailureKind::Usage, kNotAllowed, {rule, why});
        }
    }
    if (source.asIs && !source.allowed.empty()) {
        throw Failure(FailureKind::Usage, kOptionValue,
                      {"as_is", std::to_string(known.as_is), "0 beside rules that are allowed"});
    }
    return source;
}

Source SourceOf(const char* path, const velscore_options* options)
{
    Source source = SourceOf(options);
    source.name = &Given(path, "path");
    // Elsewhere a lone dash is standard input.
    source.path = source.name == "-" ? "./-" : source.name;
    return source;
}

Source SourceOf(const char* bytes, size_t size, const velscore_options* options)
{
    Source source = SourceOf(options);
    source.isText = true;
    source.text.assign(&Given(bytes, "bytes"), size);
    return source;
}

// How messages call a document of bytes; what is wrong with the options is told elsewhere.
const char* NameOf(const velscore_options* options)
{
    return options == nullptr || options->size < kOptionsSize ? nullptr : options->name;
}

// A document that is refused is a report too.
std::string ReportOf(const Source& source)
{
    try {
        return JsonText(AcceptedJson(source.name, *source.Load({})));
    } catch (const Failure& failure) {
        if (failure.Kind() != FailureKind::Document) throw;
        return JsonText(RefusedJson(source.name, failure));
    }
}

}  // namespace

std::unique_ptr<LoadedModel> Source::Load(LoadOptions options) const
{
    options.asIs = asIs;
    options.allowed = allowed;
    if (!isText) return std::make_unique<LoadedModel>(path, BuiltIn(), options);
    return std::make_unique<LoadedModel>(DocumentText{text, name}, BuiltIn(), options);
}

}  // namespace MCVelscore_850::capi

using namespace MCVelscore_850;
using namespace MCVelscore_850::capi;

velscore_model::velscore_model(Source source)
    : source_(std::move(source)), loaded_(source_.Load({}))
{}

velscore_model::Set::Set(LoadedModel& model, const Settings& settings)
    : model_(model),
      policy_(model.Model().GetMissingValuePolicy()),
      level_(model.Model().GetConfidenceLevel()),
      predictionOnly_(model.Model().GetPredictionOnly()),
      settings_(settings)
{
    if (settings.level) model.SetConfidenceLevel(*settings.level);
    if (settings.policy) model.SetPolicy(*settings.policy);
    if (settings.predictionOnly) model.WantPredictionOnly();
}

velscore_model::Set::~Set()
{
    try {
        if (settings_.level) model_.SetConfidenceLevel(level_);
    } catch (...) {  // no memory for words of it; the level itself is set before them
    }
    if (settings_.policy) {
        model_.SetPolicy(
            MissingPolicy::Substitute);  // the loaded model's mark, not the model's own
        model_.Model().SetMissingValuePolicy(static_cast<ScoreModel::MVPolicy>(policy_));
    }
    model_.Model().SetPredictionOnly(predictionOnly_);
}

const char* velscore_version(void) { return VELSCORE_VERSION; }

int velscore_open(const char* path, const velscore_options* options, velscore_model** out,
                  velscore_error* error)
{
    return Call(error, {.document = path}, [&] {
        velscore_model*& made = Given(out, "out");
        made = new velscore_model(SourceOf(path, options));
    });
}

int velscore_open_text(const char* bytes, size_t size, const velscore_options* options,
                       velscore_model** out, velscore_error* error)
{
    return Call(error, {.document = NameOf(options)}, [&] {
        velscore_model*& made = Given(out, "out");
        made = new velscore_model(SourceOf(bytes, size, options));
    });
}

void velscore_close(velscore_model* model) { delete model; }

int velscore_describe(const velscore_model* model, char** json, velscore_error* error)
{
    return Call(error, [&] {
        char*& text = Given(json, "json");
        text = NewText(Given(model, "model").With({}, ModelJson));
    });
}

int velscore_check(const char* path, const velscore_options* options, char** json,
                   velscore_error* error)
{
    return Call(error, [&] {
        char*& text = Given(json, "json");
        text = NewText(ReportOf(SourceOf(path, options)));
    });
}

int velscore_check_text(const char* bytes, size_t size, const velscore_options* options,
                        char** json, velscore_error* error)
{
    return Call(error, [&] {
        char*& text = Given(json, "json");
        text = NewText(ReportOf(SourceOf(bytes, size, options)));
    });
}

int velscore_verify(const velscore_model* model, char** json, velscore_error* error)
{
    return Call(error, {.document = model == nullptr ? nullptr : model->Name().c_str()}, [&] {
        char*& text = Given(json, "json");
        LoadOptions options;
        options.output = OutputColumns::DocumentIfAny;
        options.verification = true;
        const std::unique_ptr<LoadedModel> read = Given(model, "model").ReadAgain(options);
        const VerificationReport report = Verify(*read, *read->Verification());
        text = NewText(VerificationJson(*read, report));
    });
}
