// The purge of blacklisted chats when the messenger goes to the background:
// one scan of the messenger's ChatStorage.sqlite for all blacklisted numbers,
// then each chat found deleted through the messenger's storage. The goal is
// wall time; for scale, the searches as one LIKE query per number, run
// directly.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <chrono>
#include <string>
#include <vector>

#include "bench/benchmark_names.h"
#include "bench/cached_databases.h"
#include "bench/database_placement.h"
#include "bench/hook_benchmarks.h"
#include "simhost/host_log.h"

namespace hushwall::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kChatStorage[] =
    "/var/mobile/Applications/net.whatsapp.WhatsApp/Documents/ChatStorage.sqlite";

const Flags kPurgeOn = {{"Enabled", true},        {"SaveHistory", true},
                        {"Vibrate", false},       {"ShowStatusbarIcon", false},
                        {"DeleteMessages", true}, {"ContactsOnly", false}};

// The first `numbers` chats are blacklisted, by their whole number.
std::vector<std::string> purgedNumbers(int numbers) {
  std::vector<std::string> list;
  for (int chat = 0; chat < numbers; ++chat) list.push_back(chatNumber(chat));
  return list;
}

std::string prepare(WhatsAppUnderTest& whatsapp, int numbers, int rows) {
  const std::string path = whatsapp.device().native(kChatStorage);
  linkDatabase(cachedChatStorage(rows), path);
  whatsapp.useFlags(kPurgeOn);
  whatsapp.useBlacklist(purgedNumbers(numbers));
  return path;
}

void purge(benchmark::State& state, WhatsAppUnderTest* whatsapp, int numbers, int rows) {
  prepare(*whatsapp, numbers, rows);
  const int chats = rows / kMessagesPerChat;
  const host::Value application = whatsapp->app().make("NSObject");
  for (auto _ : state) {
    simhost::hostLog() = simhost::HostLog{};
    for (int chat = 0; chat < chats; ++chat) simhost::hostLog().chats.insert(chatJid(chat));
    const auto start = Clock::now();
    whatsapp->app().send(whatsapp->delegate(), "applicationDidEnterBackground:", {application});
    state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    if (static_cast<int>(simhost::hostLog().chats.size()) != chats - numbers) {
      state.SkipWithError("the purge did not delete exactly the blacklisted chats");
      return;
    }
  }
}

// The searches alone: the same query text per number, rows read, nothing
// else.
void searchesDirectly(benchmark::State& state, WhatsAppUnderTest* whatsapp, int numbers,
                      int rows) {
  const std::string path = prepare(*whatsapp, numbers, rows);
  const std::vector<std::string> list = purgedNumbers(numbers);
  long found = 0;
  for (auto _ : state) {
    found = 0;
    for (const std::string& number : list) {
      sqlite3* db = nullptr;
      sqlite3_open(path.c_str(), &db);
      char* sql = sqlite3_mprintf(
          "SELECT ZTOJID, ZFROMJID FROM ZWAMESSAGE WHERE ZTOJID LIKE '%%%s%%' OR ZFROMJID LIKE "
          "'%%%s%%'",
          number.c_str(), number.c_str());
      sqlite3_stmt* query = nullptr;
      sqlite3_prepare_v2(db, sql, -1, &query, nullptr);
      while (sqlite3_step(query) == SQLITE_ROW) {
        benchmark::DoNotOptimize(sqlite3_column_text(query, 0));
        benchmark::DoNotOptimize(sqlite3_column_text(query, 1));
        ++found;
      }
      sqlite3_finalize(query);
      sqlite3_free(sql);
      sqlite3_close(db);
    }
  }
  if (found != static_cast<long>(numbers) * kMessagesPerChat) {
    state.SkipWithError("the searches did not find every message of the blacklisted chats");
  }
}

}  // namespace

void registerPurgeBenchmarks(WhatsAppUnderTest& whatsapp, const BenchSizes& sizes) {
  const int numbers = sizes.purgeNumbers;
  const int rows = sizes.chatStorageRows;
  cachedChatStorage(rows);  // built before any timing starts
  benchmark::RegisterBenchmark(names::purge(numbers, rows).c_str(), purge, &whatsapp, numbers,
                               rows)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(names::purgeSearches(numbers, rows).c_str(), searchesDirectly,
                               &whatsapp, numbers, rows)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace hushwall::bench
