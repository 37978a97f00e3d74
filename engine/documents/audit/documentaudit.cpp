#include "engine/documents/audit/documentaudit.h"

#include <algorithm>

#include "engine/documents/documentloader.h"

namespace MCVelscore_850 {

namespace {

using RuleTable = std::span<const AuditRule> (*)();

constexpr RuleTable kTables[] = {VocabularyRules, CellRules,  FamilyRules,         BaselineRules,
                                 ContrastRules,   FieldRules, TransformationRules, ExtensionRules};

}  // namespace

std::vector<const AuditRule*> AllAuditRules()
{
    std::vector<const AuditRule*> rules;
    for (const RuleTable table : kTables) {
        for (const AuditRule& rule : table()) rules.push_back(&rule);
    }
    return rules;
}

const Rule* FindAuditRule(std::string_view name)
{
    for (const AuditRule* rule : AllAuditRules()) {
        if (rule->rule.name == name) return &rule->rule;
    }
    return nullptr;
}

DocumentAudit::DocumentAudit(const Document& document, std::span<const std::string> allowed,
                             Findings& findings)
    : document_(document), allowed_(allowed.begin(), allowed.end()), findings_(findings)
{}

void DocumentAudit::LookAtNames()
{
    sawNames_ = true;
    const auto tell = [this](const Rule& rule, const Detail& detail) {
        const Answer answer = AnswerOf(rule);
        findings_.Add(rule, answer, detail);
        if (answer == Answer::Fault && IsMisspeltName(rule) && !detail.attribute.empty()) {
            misspelt_.emplace_back(detail.element, detail.nearWord);
        }
    };
    LookAtVocabulary(document_.Root(), tell, &cells_);
}

void DocumentAudit::LookAtTree()
{
    if (!sawNames_) LookAtNames();
    facts_ = GatherFacts(document_, cells_);
    for (const auto& [element, meant] : misspelt_) {
        if (element == facts_.model) facts_.misspeltOptions.push_back(meant);
    }
    for (const AuditRule* rule : AllAuditRules()) {
        if (rule->tree == nullptr) continue;
        RuleReport report(rule->rule, AnswerOf(rule->rule, rule->noticeInOlderForm), findings_);
        rule->tree(facts_, report);
    }
}

void DocumentAudit::LookAtModel(const ModelDescription& model)
{
    for (const AuditRule* rule : AllAuditRules()) {
        if (rule->model == nullptr) continue;
        RuleReport report(rule->rule, AnswerOf(rule->rule, rule->noticeInOlderForm), findings_);
        rule->model(facts_, model, report);
    }
}

Answer DocumentAudit::AnswerOf(const Rule& rule, bool isNoticeInOlderForm) const
{
    const bool isAllowed = std::find(allowed_.begin(), allowed_.end(), rule.name) != allowed_.end();
    const bool isPassedOver = isAllowed || (isNoticeInOlderForm && facts_.older);
    return isPassedOver && rule.answer == Answer::Fault ? Answer::Notice : rule.answer;
}

}  // namespace MCVelscore_850
