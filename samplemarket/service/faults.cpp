#include "samplemarket/service/faults.h"

#include <algorithm>
#include <iterator>

namespace corvane::samplemarket {

namespace {

using Fault = SampleMarketFault;

bool fits(const SampleMarketFaultRule& rule, const std::string& path,
          const std::vector<std::string>& symbols) {
  return path.starts_with(rule.pathPrefix) &&
         (rule.symbol.empty() || std::ranges::find(symbols, rule.symbol) != symbols.end());
}

}  // namespace

Faults::Faults(int perThousand, std::uint64_t seed)
    : perThousand_(perThousand), noise_(Noise("faults"), static_cast<std::int64_t>(seed >> 1U)) {}

void Faults::add(SampleMarketFaultRule rule) {
  const std::lock_guard lock(mutex_);
  rules_.push_back(std::move(rule));
}

void Faults::clear() {
  const std::lock_guard lock(mutex_);
  rules_.clear();
}

std::optional<SampleMarketFaultRule> Faults::next(const std::string& path,
                                                  const std::vector<std::string>& symbols) {
  const std::lock_guard lock(mutex_);
  const std::int64_t number = requests_++;
  const auto rule = std::ranges::find_if(
      rules_, [&](const auto& candidate) { return fits(candidate, path, symbols); });
  if (rule != rules_.end()) {
    SampleMarketFaultRule result = *rule;
    if (--rule->count <= 0) {
      rules_.erase(rule);
    }
    return result;
  }
  if (noise_.uniform(0, number, 1000) >= perThousand_) {
    return std::nullopt;
  }
  constexpr Fault everywhere[] = {
      Fault::slowAnswer,      Fault::droppedConnection, Fault::unauthorized,
      Fault::tooManyRequests, Fault::serverError,       Fault::truncatedJSON,
      Fault::malformedJSON,   Fault::nullBars,          Fault::staleCrumb};
  return SampleMarketFaultRule{.fault =
                                   everywhere[noise_.uniform(1, number, std::ssize(everywhere))]};
}

Answer spoiled(Answer answer, const SampleMarketFaultRule& rule) {
  constexpr std::string_view plainText = "text/plain";
  switch (rule.fault) {
    case Fault::unauthorized:
      return errorAnswer(401, "finance", "Unauthorized", "User is unable to access this feature");
    case Fault::tooManyRequests:
      return {.status = 429,
              .body = "Too Many Requests\n",
              .contentType = std::string(plainText),
              .headers = {{"Retry-After", std::to_string(rule.retryAfterSeconds)}}};
    case Fault::serverError:
      return {.status = 500, .body = "Internal error\n", .contentType = std::string(plainText)};
    case Fault::truncatedJSON:
      answer.body.resize(answer.body.size() / 2);
      return answer;
    case Fault::malformedJSON:
      if (const auto comma = answer.body.rfind(','); comma != std::string::npos) {
        answer.body[comma] = ';';
      }
      return answer;
    case Fault::slowAnswer:
    case Fault::droppedConnection:
    case Fault::nullBars:
    case Fault::staleCrumb:
      break;
  }
  return answer;
}

}  // namespace corvane::samplemarket
