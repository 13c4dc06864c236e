// Which kind a text of a statement names.
#include <algorithm>
#include <array>
#include <utility>

#include "exchange/reading/statement_table.h"
#include "exchange/strict/cell_text.h"

namespace corvane {
namespace {

/// The words that every importer of this program knows.
constexpr std::array<std::pair<std::string_view, StatementKind>, 26> standardWords = {{
    {"buy", StatementKind::buy},
    {"bought", StatementKind::buy},
    {"sell", StatementKind::sell},
    {"sold", StatementKind::sell},
    {"transfer", StatementKind::transfer},
    {"deposit", StatementKind::deposit},
    {"cash in", StatementKind::deposit},
    {"transfer in", StatementKind::deposit},
    {"withdraw", StatementKind::withdrawal},
    {"withdrawal", StatementKind::withdrawal},
    {"cash out", StatementKind::withdrawal},
    {"transfer out", StatementKind::withdrawal},
    {"split", StatementKind::split},
    {"consolidation", StatementKind::split},
    {"dividend", StatementKind::dividend},
    {"distribution", StatementKind::dividend},
    {"cap. gains dividend", StatementKind::capitalGainsDividend},
    {"reinvested distribution", StatementKind::reinvested},
    {"return of capital", StatementKind::returnOfCapital},
    {"roc", StatementKind::returnOfCapital},
    {"journal", StatementKind::journal},
    {"cash adjustment", StatementKind::cash},
    {"interest", StatementKind::cash},
    {"credit", StatementKind::credit},
    {"expense", StatementKind::expense},
    {"fees", StatementKind::expense},
}};

}  // namespace

StatementTable::KindMatch StatementTable::matchOf(std::string_view type) const {
  KindMatch best;
  bool isTie = false;
  const auto rank = [](const KindRule& of) {
    return std::pair(!of.pattern.hasWildcards(), of.pattern.literalLength());
  };
  best.plan = &plan();
  for (std::size_t i = 0; i < layout_->kinds.size(); ++i) {
    const KindRule& rule = layout_->kinds[i];
    auto captures = rule.pattern.match(type);
    if (!captures) {
      continue;
    }
    if (best.rule == nullptr || rank(*best.rule) < rank(rule)) {
      best = {&rule, plans_[i + 1].get(), rule.kind, std::move(*captures)};
      isTie = false;
    } else if (rank(*best.rule) == rank(rule)) {
      isTie = isTie || !haveSameResult(*best.rule, rule);
    }
  }
  if (isTie) {
    return {.rule = nullptr, .plan = &plan(), .kind = std::nullopt, .captures = {}};
  }
  if (best.rule == nullptr) {
    best.kind = layout_->kind;
    const std::string folded = foldedText(type);
    const auto* word = std::ranges::find(standardWords, std::string_view(folded),
                                         [](const auto& entry) { return entry.first; });
    if (layout_->usesStandardWords && word != standardWords.end()) {
      best.kind = word->second;
    }
  }
  return best;
}

}  // namespace corvane
