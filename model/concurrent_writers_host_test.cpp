// The messenger and SpringBoard writing the history at the same time, each
// in its own process with the library loaded, kept apart by nothing but
// SQLite's file locks (no busy timeout). A write that meets the other
// process's lock is lost, and that is all that may be lost: every stored row
// is whole, none is stored twice, the file stays sound, and rows stored plus
// writes refused by a lock add up to the writes tried.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "simhost/simulated_app.h"
#include "simhost/test_device.h"
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

constexpr char kInsertHistory[] = "INSERT INTO History";
constexpr char kBlockedNumber[] = "4917012345";
constexpr char kBlockedJid[] = "4917012345@s.whatsapp.net";
// Enough rows that the two processes' commits overlap for seconds, few
// enough to keep the run short; each row is a commit of its own.
constexpr int kRowsPerWriter = 1000;
constexpr int kStanzasPerBatch = 50;
// A multiple of 128 s: the batch writer's single-precision rounding keeps
// every stanza's time apart.
constexpr double kFirstStanzaTime = 1400000000.0;

// One-shot pipes: each writer says when its library is loaded, and both
// start writing when the test says so, so that their writes overlap.
class Signal {
 public:
  Signal() {
    if (::pipe(fds_) != 0) throw std::runtime_error("pipe failed");
  }
  ~Signal() {
    ::close(fds_[0]);
    ::close(fds_[1]);
  }
  void give(int times = 1) {
    for (int i = 0; i < times; ++i) {
      if (::write(fds_[1], "x", 1) != 1) throw std::runtime_error("signal write failed");
    }
  }
  // Throws when nothing comes within a minute (the other side died).
  void take() {
    pollfd fd{fds_[0], POLLIN, 0};
    char c;
    if (::poll(&fd, 1, 60000) != 1 || ::read(fds_[0], &c, 1) != 1) {
      throw std::runtime_error("signal not given");
    }
  }

 private:
  int fds_[2];
};

// What a writer process counted of its own INSERTs, and how many
// connections to the database it holds open at the end (the writers never
// close theirs), handed to the test in a file because the process ends
// before the test looks.
struct WriterReport {
  StatementOutcomes inserts;
  std::size_t openConnections = 0;
};

void saveReport(const TestDevice& device, const std::string& file) {
  StatementOutcomes o = watchedOutcomes();
  std::ofstream(file) << o.prepared << ' ' << o.prepareLocked << ' ' << o.prepareFailed << ' '
                      << o.done << ' ' << o.stepLocked << ' ' << o.stepFailed << ' '
                      << openDescriptorsOf(device.databaseFile()) << '\n';
}

WriterReport loadReport(const std::string& file) {
  WriterReport r;
  StatementOutcomes& o = r.inserts;
  std::ifstream in(file);
  if (!(in >> o.prepared >> o.prepareLocked >> o.prepareFailed >> o.done >> o.stepLocked >>
        o.stepFailed >> r.openConnections)) {
    throw std::runtime_error("no report in " + file);
  }
  return r;
}

// The WhatsApp process: batches of stanzas from a blacklisted sender, each
// with its own text, through the incoming filter and its batch writer.
void messengerWriter(const TestDevice& device, Signal& ready, Signal& go,
                     const std::string& reportFile) {
  simhost::SimulatedApp app(device.root(), T("net.whatsapp.WhatsApp"),
                            simhost::AppClasses::kWhatsApp);
  app.loadLibrary(HUSHWALL_LIBRARY_PATH);
  Value connection = app.make("XMPPConnection");
  ready.give();
  go.take();
  watchStatements(kInsertHistory);
  for (int first = 0; first < kRowsPerWriter; first += kStanzasPerBatch) {
    host::Array batch;
    for (int n = first; n < first + kStanzasPerBatch && n < kRowsPerWriter; ++n) {
      batch.push_back(simhost::makeStanza(app.runtime(), "m" + std::to_string(n), kBlockedJid,
                                          "wa-" + std::to_string(n), "Ann",
                                          kFirstStanzaTime + 128.0 * n));
    }
    app.send(connection, "processIncomingMessageStanzas:", {Value::array(std::move(batch))});
  }
  saveReport(device, reportFile);
}

// The SpringBoard process: push banners from the same sender, each with its
// own text, through the banner hook's single-row writer.
void springBoardWriter(const TestDevice& device, Signal& ready, Signal& go,
                       const std::string& reportFile) {
  TestSpringBoard sb(device, HUSHWALL_LIBRARY_PATH);
  ready.give();
  go.take();
  watchStatements(kInsertHistory);
  for (int n = 0; n < kRowsPerWriter; ++n) {
    std::string body = "Alice: sb-" + std::to_string(n);
    sb.deliverToBanner(sb.bulletin(kMessengerId, remoteContext(body, kBlockedJid), body));
  }
  saveReport(device, reportFile);
}

// The row each writer stores for its n-th message; nullopt for a row that
// neither writes. SpringBoard stamps its rows with the time of delivery, so
// only that column is checked loosely.
std::optional<HistoryRow> expectedRow(const HistoryRow& stored, std::string* writer, int* n) {
  if (!stored.message) return std::nullopt;
  const std::string& text = *stored.message;
  if (text.rfind("wa-", 0) == 0) {
    *writer = "wa";
    *n = std::stoi(text.substr(3));
    return HistoryRow{kBlockedNumber, "Ann", text,
                      static_cast<double>(static_cast<float>(kFirstStanzaTime + 128.0 * *n)),
                      0, 0, "", "", 0};
  }
  if (text.rfind("sb-", 0) == 0) {
    *writer = "sb";
    *n = std::stoi(text.substr(3));
    HistoryRow row{kBlockedJid, "Alice", text, stored.date, 2, 0, "", "", 0};
    if (!stored.date || *stored.date < kFirstStanzaTime) row.date = std::nullopt;
    return row;
  }
  return std::nullopt;
}

TEST(ConcurrentWriters, OnlyWritesThatMeetTheOtherProcesssLockAreLost) {
  TestDevice device;
  device.installDatabase();
  device.addToBlacklist(kBlockedNumber, "Ann");
  // The remote banner path records with SaveHistory and without the icon.
  device.writeSettings(settingsFlags(true, true, false, false));
  const std::string waReportFile = device.native("/wa.report");
  const std::string sbReportFile = device.native("/sb.report");

  Signal ready, go;
  {
    BackgroundProcess messenger([&] { messengerWriter(device, ready, go, waReportFile); });
    BackgroundProcess springBoard([&] { springBoardWriter(device, ready, go, sbReportFile); });
    ready.take();
    ready.take();
    go.give(2);
    messenger.expectSuccess(120);
    springBoard.expectSuccess(120);
  }
  ASSERT_FALSE(::testing::Test::HasFailure());

  EXPECT_EQ(integrityCheck(device.databaseFile()), "ok");

  std::map<std::string, std::set<int>> stored;
  std::map<std::string, int> interleaved;  // rows stored right after the other writer's
  std::string previousWriter;
  for (const auto& [rowid, row] : snapshotHistory(device.databaseFile())) {
    std::string writer;
    int n = -1;
    std::optional<HistoryRow> expected = expectedRow(row, &writer, &n);
    ASSERT_TRUE(expected.has_value()) << "row " << rowid << " belongs to no writer";
    EXPECT_TRUE(sameRow(row, *expected)) << "row " << rowid << " (" << *row.message
                                         << ") is not what its writer wrote";
    EXPECT_TRUE(n >= 0 && n < kRowsPerWriter) << *row.message;
    EXPECT_TRUE(stored[writer].insert(n).second) << *row.message << " stored twice";
    if (!previousWriter.empty() && previousWriter != writer) ++interleaved[writer];
    previousWriter = writer;
  }

  const WriterReport waReport = loadReport(waReportFile);
  const WriterReport sbReport = loadReport(sbReportFile);
  const StatementOutcomes& wa = waReport.inserts;
  const StatementOutcomes& sb = sbReport.inserts;
  for (const auto& [name, counted] : {std::pair{"wa", wa}, std::pair{"sb", sb}}) {
    const long rows = static_cast<long>(stored[name].size());
    // Every message led to exactly one INSERT; none failed but for a lock.
    EXPECT_EQ(counted.prepared + counted.prepareLocked + counted.prepareFailed, kRowsPerWriter)
        << name;
    EXPECT_EQ(counted.failedOtherwise(), 0) << name;
    // Each INSERT that went through is a stored row, and the rest were
    // refused by the lock.
    EXPECT_EQ(counted.done, rows) << name;
    EXPECT_EQ(rows + counted.locked(), kRowsPerWriter) << name;
  }
  // SpringBoard's single-row writer leaves one connection behind for every
  // INSERT it prepared, the messenger's batch writer one per batch at most.
  EXPECT_GE(sbReport.openConnections, static_cast<std::size_t>(sb.prepared));
  EXPECT_LE(waReport.openConnections,
            static_cast<std::size_t>(kRowsPerWriter / kStanzasPerBatch + 1));

  std::printf(
      "hushwall-figure: two writers, %d rows tried each: WhatsApp stored %zu, lost %ld to a "
      "locked database (%ld at prepare, %ld at step); SpringBoard stored %zu, lost %ld "
      "(%ld at prepare, %ld at step); writers alternated %d times; integrity_check ok; "
      "connections left open: WhatsApp %zu, SpringBoard %zu\n",
      kRowsPerWriter, stored["wa"].size(), wa.locked(), wa.prepareLocked, wa.stepLocked,
      stored["sb"].size(), sb.locked(), sb.prepareLocked, sb.stepLocked,
      interleaved["wa"] + interleaved["sb"], waReport.openConnections, sbReport.openConnections);
}

}  // namespace
}  // namespace hushwall::testing
