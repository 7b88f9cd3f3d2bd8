#include "LogTransfer.h"

#include "Commands.h"
#include "DiveLogCsv.h"
#include "DiveLogPage.h"
#include "Localization.h"
#include "LogIndex.h"
#include "SaveResult.h"
#include "SystemLog.h"

namespace {

enum LogDownloadMode : int32_t { kListing = 0, kDownload = 1, kPageDump = 2 };
constexpr int32_t kLastDumpOffset = 499;

}  // namespace

LogTransfer::LogTransfer(Session &session) : session_(session), context_(session.context()) {
  context_.hooks.logHistory = [this](char *bytes, size_t length) { receiveHistory(bytes, length); };
  context_.hooks.logData = [this](char *bytes, size_t length) { receivePage(bytes, length); };
}

LogTransfer::~LogTransfer() {
  // The receive thread must not run these handlers any more.
  session_.closeSerialPort();
  context_.hooks.logHistory = nullptr;
  context_.hooks.logData = nullptr;
}

void LogTransfer::requestPage(int32_t number, bool dropSequenceOnFailure) {
  context_.transitions.request(Command::Page(number), dropSequenceOnFailure);
}

void LogTransfer::receiveHistory(char *bytes, size_t length) {
  if (length != kLogHistoryBytes) return;
  SessionState &state = context_.state;
  if (state.logDownloadMode == kPageDump) {
    SystemLog("Log download (save history)");
    readRequestDiveLog();
    return;
  }
  const LogHistory history = DecodeLogHistory(bytes);
  state.historyNumber = history.historyNumber;
  state.historyCount = history.numberOf;
  state.historyStart = history.start;
  state.logNumber = history.start;
  context_.model.update([&history](DeviceState &published) {
    published.heldDives = history.numberOf;
    published.progress = {1, 0, int64_t(history.numberOf) * DiveLogPage::kBytes};
  });
  SystemLog("history number_of:%08d start:%08d{No.%08d}", history.numberOf, history.start,
            history.historyNumber);
  listedPages_.set({});
  if (history.numberOf >= 1) {
    state.pageReceived = 0;
    state.receiveType = eSERIAL_RX_LOG_DATA;
    requestPage(state.logNumber, false);
  } else if (state.indexSequence == 1) {
    // No dives: the sequence ends here, without the "#detail" a listing ends with.
    endOfIndexSequence(false);
  }
}

void LogTransfer::endOfIndexSequence(bool sendDetail) {
  SessionState &state = context_.state;
  // The answer to the closing "#detail" is due before the session is idle: whatever
  // starts next waits for it rather than reading it as its own reply.
  if (sendDetail) state.trailingReplyPending = true;
  context_.transitions.offerRequests(true);
  context_.transitions.enter(CONNECTED_IDLE);
  context_.transitions.finish(
      Outcome{Operation::ConnectAndList, Failure::None, Localized("status_connected"), {}});
  if (sendDetail) closeWithDetail();
  state.indexSequence = 0;
  context_.transitions.publishPhase();
}

void LogTransfer::closeWithDetail() {
  context_.state.trailingReplyPending = true;
  context_.transitions.request(CONNECTED_IDLE, eSERIAL_RX_RESPONSE, Command::kDetail, false);
}

void LogTransfer::receivePage(char *bytes, size_t length) {
  SessionState &state = context_.state;
  if (state.pageReceived == 0) pageBuffer.clear();
  pageBuffer.append(bytes, qsizetype(length));
  // Only exactly one page completes it; a read that runs past 4096 never does.
  if ((state.pageReceived += int32_t(length)) != DiveLogPage::kBytes) return;
  switch (state.logDownloadMode.load()) {
    case kListing:
      listingPage();
      break;
    case kDownload:
      downloadPage();
      break;
    case kPageDump:
      SystemLog("Log download (offset:%03d)", state.pageOffset - 1);
      readRequestDiveLog();
      break;
  }
  state.pageReceived = 0;
}

void LogTransfer::listingPage() {
  SessionState &state = context_.state;
  const int32_t fetched = state.logNumber;
  const DecodedPage read = DecodePage(pageBuffer);
  listedPages_.with([&](QMap<int32_t, DecodedPage> &pages) { pages[fetched] = read; });
  pageRead(fetched, read);
  // A damaged page is listed whatever the period: its date cannot be trusted to leave it out.
  if (read.dive.damage || DiveLogDayNumber(read.dive) >= state.searchFromDate) {
    addDiveRow(read.dive, fetched);
  }
  // Older dives are fetched all the same: the count, not the date, ends the listing.
  const int32_t next = --state.logNumber;
  context_.model.update([read = state.historyStart - next](DeviceState &published) {
    published.progress.item = read + 1;
    published.progress.bytesDone = int64_t(read) * DiveLogPage::kBytes;
  });
  if (fetched >= 1 && state.historyStart - next < state.historyCount) {
    state.receiveType = eSERIAL_RX_LOG_DATA;
    requestPage(next, false);
    return;
  }
  if (state.indexSequence == 1) endOfIndexSequence(true);
}

void LogTransfer::pageRead(int32_t number, const DecodedPage &page) {
  if (!pageHandler_) return;
  mainThread_.post([this, number, page] { pageHandler_(number, page); });
}

Outcome LogTransfer::saveDive(const DiveRecord &dive) const {
  const QString base = DiveLogFileBaseName(dive);
  const QString name = base + QStringLiteral("_profile.csv");
  const QString path = AppendPathComponent(context_.state.paths.get().logFolder, name);
  const SaveResult saved = DiveLogCsvSave(path, dive);
  // "Download complete" only for a file that is there, whole.
  if (saved.saved()) {
    return Outcome{Operation::DownloadDive, Failure::None,
                   base + QStringLiteral("\r\n") + Localized("download_complete"), path};
  }
  return Outcome{
      Operation::DownloadDive, Failure::CannotSave, DescribeSaveFailure(saved, name), {}};
}

std::optional<DecodedPage> LogTransfer::listedPage(int32_t number) const {
  return listedPages_.with(
      [number](const QMap<int32_t, DecodedPage> &pages) -> std::optional<DecodedPage> {
        if (!pages.contains(number)) return std::nullopt;
        return pages[number];
      });
}

Outcome LogTransfer::saveListedDive(int32_t number) {
  const std::optional<DecodedPage> page = listedPage(number);
  if (!page) {
    return Outcome{
        Operation::DownloadDive, Failure::NotOnDevice, Localized("item_not_on_device"), {}};
  }
  if (QString error; !context_.createFolders(&error)) {
    return Outcome{Operation::DownloadDive, Failure::CannotMakeFolder, error, {}};
  }
  return saveDive(page->dive);
}

void LogTransfer::downloadPage() {
  SessionState &state = context_.state;
  const DecodedPage read = DecodePage(pageBuffer);
  pageRead(state.logNumber, read);
  Outcome outcome = saveDive(read.dive);
  context_.model.update(
      [](DeviceState &published) { published.progress.bytesDone = DiveLogPage::kBytes; });
  state.logDownloadMode = kListing;
  context_.transitions.offerRequests(true);
  context_.transitions.finish(std::move(outcome));
  closeWithDetail();
}

void LogTransfer::addDiveRow(const DiveRecord &dive, int32_t number) {
  const DiveRow row = ListedDive(number, dive);
  mainThread_.post([this, row] {
    bool first = false;
    context_.model.update([&](DeviceState &published) {
      first = published.dives.isEmpty();
      published.dives.append(row);
    });
    // The first row is picked as it comes.
    if (first) SystemLog("AddDiveLogIndex:select=%ld", 0L);
  });
}

void LogTransfer::setSearchRange(int months) {
  context_.state.searchFromDate = SearchDateBound(months, today());
}

void LogTransfer::downloadDive(int32_t number, OutcomeHandler done) {
  SessionState &state = context_.state;
  const auto refuse = [&done](Failure failure, const QString &sentence) {
    if (done) done(Outcome{Operation::DownloadDive, failure, sentence, {}});
  };
  if (state.phase != CONNECTED_IDLE || context_.operation.active()) {
    refuse(Failure::Busy, Localized("device_busy"));
    return;
  }
  if (QString error; !context_.createFolders(&error)) {
    refuse(Failure::CannotMakeFolder, error);
    return;
  }
  state.logNumber = number;
  // A dive no longer in the device's history is not asked for.
  if (number < 0 || state.historyStart - number >= state.historyCount) {
    refuse(Failure::NotOnDevice, Localized("item_not_on_device"));
    return;
  }
  context_.operation.begin(Operation::DownloadDive, std::move(done));
  context_.model.update([number](DeviceState &published) {
    published.progress = {number, 0, DiveLogPage::kBytes};
  });
  context_.whenLineQuiet([this, number] {
    SessionState &state = context_.state;
    context_.transitions.offerRequests(false);
    state.pageReceived = 0;
    state.logDownloadMode = kDownload;
    context_.transitions.request(CONNECTED_IDLE, eSERIAL_RX_LOG_DATA, Command::Page(number));
  });
}

void LogTransfer::readRequestDiveLog() {
  SessionState &state = context_.state;
  const int32_t offset = state.pageOffset;
  QString command;
  if (offset <= kLastDumpOffset) {
    state.pageReceived = 0;
    state.receiveType = eSERIAL_RX_LOG_DATA;
    state.logDownloadMode = kPageDump;
    command = Command::DumpPage(offset);
  } else if (offset == kLastDumpOffset + 1) {
    state.receiveType = eSERIAL_RX_LOG_HISTORY;
    state.logDownloadMode = kPageDump;
    command = QString::fromLatin1(Command::kLogHistory);
  } else {
    SystemLog("readRequestDiveLog else..");
    return;
  }
  state.pageOffset = offset + 1;
  context_.transitions.request(command);
}
