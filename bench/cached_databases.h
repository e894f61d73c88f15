// The large databases the benchmarks read: made once, kept in the build
// folder (bench-data/) and reused by later runs, since a million History rows
// take longer to write than the benchmark that reads them.
//
// Their content is made up but shaped like the real thing, and the
// generators below say what is where, so a benchmark can ask for a row it
// knows exists.
#ifndef HUSHWALL_BENCH_CACHED_DATABASES_H_
#define HUSHWALL_BENCH_CACHED_DATABASES_H_

#include <string>

namespace hushwall::bench {

// --- HSWL.db with a History of `rows` rows -----------------------------------

// Row i of the History: one of a thousand senders, a message text of its
// own, dated ten seconds after row i - 1.
std::string historyNumber(int row);
std::string historyMessage(int row);
double historyDate(int row);

// The path of the cached HSWL.db (made from the template, with the schema's
// index) whose History holds rows 0 .. rows - 1. Builds it when missing.
std::string cachedHistoryDatabase(int rows);

// --- The messenger's ChatStorage.sqlite --------------------------------------

// Chat c's phone number and JID; each chat has a hundred message rows, taking
// turns between sent (ZTOJID) and received (ZFROMJID).
std::string chatNumber(int chat);
std::string chatJid(int chat);
inline constexpr int kMessagesPerChat = 100;

// The path of the cached ChatStorage.sqlite with `rows` message rows in
// rows / kMessagesPerChat chats. Builds it when missing.
std::string cachedChatStorage(int rows);

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_CACHED_DATABASES_H_
