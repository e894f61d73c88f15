#include "messenger/chat_search.h"

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

namespace hushwall {
namespace {

// Every message row sent to or received from a JID containing the number.
constexpr char kMessagesWithNumber[] =
    "SELECT ZTOJID, ZFROMJID FROM ZWAMESSAGE WHERE ZTOJID LIKE '%%%s%%' OR ZFROMJID LIKE '%%%s%%'";
// The same scan with a pattern that every text passes: the same plan, so the
// rows come in the same order, and a row whose JIDs are both NULL, which
// contains no number, is left out here as there.
constexpr char kEveryMessage[] =
    "SELECT ZTOJID, ZFROMJID FROM ZWAMESSAGE WHERE ZTOJID LIKE '%' OR ZFROMJID LIKE '%'";
// SQLite refuses LIKE patterns over 50,000 bytes by default (the query then
// finds nothing); numbers far below that are searched in one pass.
constexpr std::size_t kLongestOnePassNumber = 1000;

// Aho-Corasick over the distinct numbers' bytes. A row's text is read as the
// query reads it, as UTF-8 up to its first NUL. The numbers are printable
// ASCII, which a UTF-8 decoder never folds into another character, so a
// number occurs in the bytes exactly when it occurs in the decoded text.
class NumberMatcher {
 public:
  explicit NumberMatcher(const std::vector<std::string>& patterns) {
    symbol_.fill(kNone);
    for (const std::string& p : patterns) {
      for (unsigned char c : p) {
        if (symbol_[c] == kNone) symbol_[c] = symbols_++;
      }
    }
    newState();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      std::int32_t state = 0;
      for (unsigned char c : patterns[i]) {
        const std::size_t edge = at(state, symbol_[c]);
        if (next_[edge] == 0) {  // state 0 is never a child
          const std::int32_t child = newState();
          next_[edge] = child;
        }
        state = next_[edge];
      }
      ends_[state] = static_cast<std::int32_t>(i);
    }
    // Breadth first: fail links, then the full transition table, and the
    // nearest state on the fail chain that ends a pattern.
    std::vector<std::int32_t> queue;
    for (std::int32_t s = 0; s < symbols_; ++s) {
      if (next_[s] != 0) queue.push_back(next_[s]);
    }
    for (std::size_t head = 0; head < queue.size(); ++head) {
      const std::int32_t state = queue[head];
      const std::int32_t fail = fail_[state];
      output_[state] = ends_[fail] >= 0 ? fail : output_[fail];
      for (std::int32_t s = 0; s < symbols_; ++s) {
        std::int32_t& next = next_[at(state, s)];
        const std::int32_t viaFail = next_[at(fail, s)];
        if (next == 0) {
          next = viaFail;
        } else {
          fail_[next] = viaFail;
          queue.push_back(next);
        }
      }
    }
  }

  // Calls found(pattern) for every pattern occurring in text, at least once.
  template <typename Found>
  void scan(const unsigned char* text, Found&& found) const {
    std::int32_t state = 0;
    for (; *text != 0; ++text) {
      const std::int32_t s = symbol_[*text];
      state = s == kNone ? 0 : next_[at(state, s)];
      for (std::int32_t at = ends_[state] >= 0 ? state : output_[state]; at > 0; at = output_[at]) {
        found(ends_[at]);
      }
    }
  }

 private:
  static constexpr std::int32_t kNone = -1;

  std::size_t at(std::int32_t state, std::int32_t symbol) const {
    return static_cast<std::size_t>(state) * static_cast<std::size_t>(symbols_) + static_cast<std::size_t>(symbol);
  }

  std::int32_t newState() {
    next_.resize(next_.size() + symbols_, 0);
    fail_.push_back(0);
    output_.push_back(0);
    ends_.push_back(-1);
    return static_cast<std::int32_t>(ends_.size() - 1);
  }

  std::array<std::int32_t, 256> symbol_{};
  std::int32_t symbols_ = 0;
  std::vector<std::int32_t> next_, fail_, output_, ends_;
};

}  // namespace

host::Array sessionsByQuery(const Database& db, const host::OptText& number) {
  host::Array result;
  // Built with %s, not %q: the numbers come from the user's own blacklist,
  // digits in practice, and an entry with a quote in it simply fails to
  // prepare and finds no chats. The string is not freed, as it never has
  // been in the shipped tweak: a few dozen bytes per entry, only on trips to
  // the background, and the purge is kept exactly as it has always run
  // rather than tidied.
  std::string utf8;
  if (number) utf8 = host::toUtf8(*number);
  const char* numberText = number ? utf8.c_str() : nullptr;
  char* sql = sqlite3_mprintf(kMessagesWithNumber, numberText, numberText);

  Statement query(db, sql);
  if (!query.isPrepared()) return result;
  const host::Text needle = number.value_or(host::Text());
  while (query.step() == SQLITE_ROW) {
    host::Text to = query.columnText(0).value_or(host::Text());
    host::Text from = query.columnText(1).value_or(host::Text());
    // LIKE ignores case and treats "_" as a wildcard; this plain test keeps
    // only JIDs that really contain the number. A row names one chat: the
    // recipient when it is the number's, otherwise the sender.
    if (host::containsByLocation(to, needle)) {
      result.push_back(host::Value::string(to));
    } else if (host::containsByLocation(from, needle)) {
      result.push_back(host::Value::string(from));
    }
  }
  return result;
}

bool searchableInOnePass(const host::Text& number) {
  if (number.empty() || number.size() > kLongestOnePassNumber) return false;
  for (char16_t c : number) {
    if (c < 0x20 || c > 0x7E || c == u'\'') return false;
  }
  return true;
}

std::vector<std::optional<host::Array>> sessionsInOnePass(const Database& db,
                                                         const std::vector<host::Text>& numbers) {
  std::vector<std::optional<host::Array>> results(numbers.size());
  // A number listed twice is searched once.
  std::map<host::Text, std::int32_t> patternOf;
  std::vector<std::string> patterns;
  std::vector<std::int32_t> entryPattern(numbers.size(), -1);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (!searchableInOnePass(numbers[i])) continue;
    auto [at, added] = patternOf.emplace(numbers[i], static_cast<std::int32_t>(patterns.size()));
    if (added) patterns.push_back(host::toUtf8(numbers[i]));
    entryPattern[i] = at->second;
  }
  std::vector<host::Array> found(patterns.size());
  if (!patterns.empty()) {
    Statement query(db, kEveryMessage);
    if (query.isPrepared()) {
      const NumberMatcher matcher(patterns);
      // Per pattern, the last row that it matched in ZTOJID; the row goes to
      // a pattern once, by its recipient when that contains it.
      std::vector<std::int64_t> toRow(patterns.size(), -1), fromRow(patterns.size(), -1);
      std::vector<std::int32_t> hits;
      for (std::int64_t row = 0; query.step() == SQLITE_ROW; ++row) {
        const auto* to = sqlite3_column_text(query.handle(), 0);
        const auto* from = sqlite3_column_text(query.handle(), 1);
        hits.clear();
        if (to != nullptr) {
          matcher.scan(to, [&](std::int32_t p) {
            if (toRow[p] == row) return;
            toRow[p] = row;
            hits.push_back(p);
          });
        }
        if (!hits.empty()) {
          const host::Value jid = host::Value::string(*host::fromUtf8(reinterpret_cast<const char*>(to)));
          for (std::int32_t p : hits) found[p].push_back(jid);
        }
        if (from == nullptr) continue;
        hits.clear();
        matcher.scan(from, [&](std::int32_t p) {
          if (toRow[p] == row || fromRow[p] == row) return;
          fromRow[p] = row;
          hits.push_back(p);
        });
        if (!hits.empty()) {
          const host::Value jid = host::Value::string(*host::fromUtf8(reinterpret_cast<const char*>(from)));
          for (std::int32_t p : hits) found[p].push_back(jid);
        }
      }
    }
  }
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (entryPattern[i] >= 0) results[i] = found[entryPattern[i]];
  }
  return results;
}

}  // namespace hushwall
