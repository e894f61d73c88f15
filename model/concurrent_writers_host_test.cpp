// The history written by host processes with the library loaded, kept apart
// by nothing but SQLite's file locks (no busy timeout): two writers at once,
// and a writer killed in the middle of a batch.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include "messenger/whatsapp_test_process.h"
#include "simhost/test_springboard.h"
#include "simhost/whatsapp_classes.h"
#include "testing/background_process.h"
#include "testing/history_snapshot.h"
#include "testing/open_descriptors.h"
#include "testing/statement_outcomes.h"

namespace hushwall::testing {
namespace {

using host::T;
using host::Value;

constexpr char kBlockedNumber[] = "4917012345";
constexpr char kBlockedJid[] = "4917012345@s.whatsapp.net";
// A multiple of 128 s: the batch writer's single-precision rounding keeps
// every stanza's time apart.
constexpr double kFirstStanzaTime = 1400000000.0;

// Stanzas number `first` to `end` from a blacklisted sender, each with its own
// id and text.
host::Array stanzas(simhost::SimulatedApp& app, const std::string& prefix, int first, int end) {
  host::Array batch;
  for (int n = first; n < end; ++n) {
    batch.push_back(simhost::makeStanza(app.runtime(), prefix + std::to_string(n), kBlockedJid,
                                        prefix + std::to_string(n), "Ann", kFirstStanzaTime + 128.0 * n));
  }
  return batch;
}

void deliver(simhost::SimulatedApp& app, host::Array batch) {
  app.send(app.make("XMPPConnection"), "processIncomingMessageStanzas:", {Value::array(std::move(batch))});
}

// Polls for up to a minute.
bool waitFor(const std::function<bool()>& done, int pollMilliseconds = 1) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(pollMilliseconds));
  }
  return true;
}

// Memory the test shares with the writers it forks: when to start, and what
// each writer counted of its own INSERTs and how many connections to the
// database it holds open at the end (the writers never close theirs).
struct SharedWithWriters {
  std::atomic<int> ready{0};
  std::atomic<bool> go{false};
  StatementOutcomes inserts[2];
  std::size_t openConnections[2] = {0, 0};
};

// Enough rows that the two processes' commits overlap for seconds, few
// enough to keep the run short; each row is a commit of its own.
constexpr int kRowsPerWriter = 1000;
constexpr int kStanzasPerBatch = 50;
enum Writer { kWhatsApp, kSpringBoard };

// Says it is ready, waits for the word, and counts the INSERTs of `write`.
void runWriter(const TestDevice& device, SharedWithWriters& shared, Writer writer, const std::function<void()>& write) {
  ++shared.ready;
  if (!waitFor([&] { return shared.go.load(); })) throw std::runtime_error("never told to go");
  watchStatements("INSERT INTO History");
  write();
  shared.inserts[writer] = watchedOutcomes();
  shared.openConnections[writer] = openDescriptorsOf(device.databaseFile());
}

// A write that meets the other process's lock is lost, and that is all that
// may be lost: every stored row is whole, none is stored twice, the file
// stays sound, and rows stored plus writes refused by a lock add up to the
// writes tried.
TEST(ConcurrentWriters, OnlyWritesThatMeetTheOtherProcesssLockAreLost) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist(kBlockedNumber, "Ann");
  // The remote banner path records with SaveHistory and without the icon.
  device.writeSettings(settingsFlags(true, true, false, false));
  auto* shared = new (::mmap(nullptr, sizeof(SharedWithWriters), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                             -1, 0)) SharedWithWriters;
  {
    // WhatsApp: batches through the incoming filter and its batch writer.
    BackgroundProcess messenger([&] {
      simhost::SimulatedApp app(device.root(), T("net.whatsapp.WhatsApp"), simhost::AppClasses::kWhatsApp);
      app.loadLibrary(HUSHWALL_LIBRARY_PATH);
      runWriter(device, *shared, kWhatsApp, [&] {
        for (int first = 0; first < kRowsPerWriter; first += kStanzasPerBatch)
          deliver(app, stanzas(app, "wa-", first, std::min(first + kStanzasPerBatch, kRowsPerWriter)));
      });
    });
    // SpringBoard: push banners through the banner hook's single-row writer.
    BackgroundProcess springBoard([&] {
      TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH);
      runWriter(device, *shared, kSpringBoard, [&] {
        for (int n = 0; n < kRowsPerWriter; ++n) {
          const std::string body = "Alice: sb-" + std::to_string(n);
          sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext(body, kBlockedJid), body));
        }
      });
    });
    ASSERT_TRUE(waitFor([&] { return shared->ready == 2; }));
    shared->go = true;
    messenger.expectSuccess(120);
    springBoard.expectSuccess(120);
  }
  ASSERT_FALSE(::testing::Test::HasFailure());
  EXPECT_EQ(integrityCheck(device.databaseFile()), "ok");

  std::set<int> stored[2];
  int alternations = 0;
  int previous = -1;
  for (const auto& [rowid, row] : snapshotHistory(device.databaseFile())) {
    ASSERT_TRUE(row.message) << "row " << rowid;
    const std::string& text = *row.message;
    const int writer = text.rfind("wa-", 0) == 0 ? kWhatsApp : text.rfind("sb-", 0) == 0 ? kSpringBoard : -1;
    ASSERT_NE(writer, -1) << "row " << rowid << " belongs to no writer";
    const int n = std::stoi(text.substr(3));
    // SpringBoard stamps its rows with the time of delivery, so only that
    // column is checked loosely.
    const HistoryRow expected =
        writer == kWhatsApp
            ? HistoryRow{kBlockedNumber, "Ann", text, static_cast<double>(static_cast<float>(kFirstStanzaTime + 128.0 * n)),
                         0, 0, "", "", 0}
            : HistoryRow{kBlockedJid, "Alice", text, row.date && *row.date >= kFirstStanzaTime ? row.date : std::nullopt,
                         2, 0, "", "", 0};
    EXPECT_TRUE(sameRow(row, expected)) << "row " << rowid << " (" << text << ") is not what its writer wrote";
    EXPECT_TRUE(n >= 0 && n < kRowsPerWriter) << text;
    EXPECT_TRUE(stored[writer].insert(n).second) << text << " stored twice";
    alternations += previous != -1 && previous != writer;
    previous = writer;
  }
  for (int writer : {kWhatsApp, kSpringBoard}) {
    const StatementOutcomes& counted = shared->inserts[writer];
    const long rows = static_cast<long>(stored[writer].size());
    // Every message led to exactly one INSERT; none failed but for a lock;
    // each that went through is a stored row, and the rest met the lock.
    EXPECT_EQ(counted.prepared + counted.prepareLocked + counted.prepareFailed, kRowsPerWriter) << writer;
    EXPECT_EQ(counted.failedOtherwise(), 0) << writer;
    EXPECT_EQ(counted.done, rows) << writer;
    EXPECT_EQ(rows + counted.locked(), kRowsPerWriter) << writer;
  }
  const StatementOutcomes &wa = shared->inserts[kWhatsApp], &sb = shared->inserts[kSpringBoard];
  // SpringBoard's single-row writer leaves one connection behind for every
  // INSERT it prepared, the messenger's batch writer one per batch at most.
  EXPECT_GE(shared->openConnections[kSpringBoard], static_cast<std::size_t>(sb.prepared));
  EXPECT_LE(shared->openConnections[kWhatsApp], static_cast<std::size_t>(kRowsPerWriter / kStanzasPerBatch + 1));
  std::printf("hushwall-figure: two writers, %d rows tried each: WhatsApp stored %zu, lost %ld to a locked database "
              "(%ld at prepare, %ld at step); SpringBoard stored %zu, lost %ld (%ld at prepare, %ld at step); writers "
              "alternated %d times; integrity_check ok; connections left open: WhatsApp %zu, SpringBoard %zu\n",
              kRowsPerWriter, stored[kWhatsApp].size(), wa.locked(), wa.prepareLocked, wa.stepLocked,
              stored[kSpringBoard].size(), sb.locked(), sb.prepareLocked, sb.stepLocked, alternations,
              shared->openConnections[kWhatsApp], shared->openConnections[kSpringBoard]);
  ::munmap(shared, sizeof(SharedWithWriters));
}

int rowsWithPrefix(const std::map<std::int64_t, HistoryRow>& rows, const std::string& prefix) {
  int count = 0;
  for (const auto& [rowid, row] : rows) count += row.message && row.message->rfind(prefix, 0) == 0;
  return count;
}

// The messenger SIGKILLed while its batch writer, which commits row by row,
// stores a large batch: every row another process saw before the kill is
// still there afterwards, whole, the file stays sound, and the next start of
// the app writes as usual.
TEST(KilledWriter, RowsCommittedBeforeASigkillSurviveAndTheNextStartWrites) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist(kBlockedNumber, "Ann");
  device.writeFlags({{"Enabled", true}});
  const std::string journal = device.databaseFile() + "-journal";
  constexpr int kBatchSize = 2000;
  int round = 0, hotJournals = 0;
  std::string seenAndKept;
  // How many of a round's rows the test sees committed before it kills the
  // writer: from the first row to a few hundred.
  for (int killAfter : {1, 25, 100, 250, 500}) {
    const std::string prefix = "r" + std::to_string(++round) + "-";
    BackgroundProcess writer([&] {
      simhost::SimulatedApp app(device.root(), T("net.whatsapp.WhatsApp"), simhost::AppClasses::kWhatsApp);
      app.loadLibrary(HUSHWALL_LIBRARY_PATH);
      deliver(app, stanzas(app, prefix, 0, kBatchSize));
    });
    // Watch from outside, then kill at once, whatever the writer is doing.
    // Each look reads the whole table under a read lock that makes the
    // writer lose the row it commits meanwhile; an instrumented build reads
    // slowly, so the looks are spaced to leave the writer most of its time.
    std::map<std::int64_t, HistoryRow> seen;
    ASSERT_TRUE(waitFor([&] { return rowsWithPrefix(seen = snapshotHistory(device.databaseFile()), prefix) >= killAfter; },
                        25))
        << "the writer never got going";
    writer.kill(SIGKILL);
    const int status = writer.wait();
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the writer finished before the kill";
    hotJournals += std::filesystem::exists(journal) && std::filesystem::file_size(journal) > 0;

    EXPECT_EQ(integrityCheck(device.databaseFile()), "ok") << "after kill " << round;
    const auto after = snapshotHistory(device.databaseFile());
    for (const auto& [rowid, row] : seen) {
      auto found = after.find(rowid);
      ASSERT_NE(found, after.end()) << "row " << rowid << " vanished with kill " << round;
      EXPECT_TRUE(sameRow(found->second, row)) << "row " << rowid << " changed";
    }
    const int kept = rowsWithPrefix(after, prefix);
    EXPECT_LT(kept, kBatchSize) << "not killed in the middle of the batch";
    seenAndKept += (round > 1 ? ", " : "") + std::to_string(rowsWithPrefix(seen, prefix)) + " seen/" +
                   std::to_string(kept) + " kept";
  }

  const std::size_t before = snapshotHistory(device.databaseFile()).size();
  inWhatsApp(device, [&](simhost::SimulatedApp& app, NotificationCounter&) { deliver(app, stanzas(app, "restart-", 0, 10)); });
  const auto final = snapshotHistory(device.databaseFile());
  EXPECT_EQ(final.size(), before + 10);
  EXPECT_EQ(rowsWithPrefix(final, "restart-"), 10);
  EXPECT_EQ(integrityCheck(device.databaseFile()), "ok");
  std::printf("hushwall-figure: crashes: %d SIGKILLs in the middle of a %d-row batch (rows %s); %d left a hot "
              "journal; every row committed before a kill kept; integrity_check ok; restart stored 10 of 10\n",
              round, kBatchSize, seenAndKept.c_str(), hotJournals);
}

}  // namespace
}  // namespace hushwall::testing
