#pragma once

#include <QByteArray>
#include <QDate>
#include <QMap>
#include <QString>
#include <functional>
#include <optional>

#include "DiveRecord.h"
#include "Session.h"

// Dive logs through the session: the history record, the listing of every held dive
// newest first (rows only for dives within the date range), the download of the selected
// dive as its CSV file, and the page dump. Installs its handlers into the session; made
// on the main thread, before the port opens.
class LogTransfer {
 public:
  explicit LogTransfer(Session &session);
  ~LogTransfer();
  LogTransfer(const LogTransfer &) = delete;
  LogTransfer &operator=(const LogTransfer &) = delete;

  // Downloads the dive with that history number as its CSV file; done hears how it ended,
  // on the main thread. Refused at once while the session is not idle, when the storage
  // folders cannot be made, or for a dive the device no longer holds.
  void downloadDive(int32_t number, OutcomeHandler done);
  // Saves a dive the last listing read as its CSV file, from the page already read: the
  // file is byte for byte the one a download writes, and nothing goes over the wire.
  // NotOnDevice when the listing did not read that dive. Main thread.
  Outcome saveListedDive(int32_t number);
  bool hasListedPage(int32_t number) const { return listedPage(number).has_value(); }
  // The page of that dive as the last listing read it, and the dive decoded from it.
  std::optional<DecodedPage> listedPage(int32_t number) const;
  // Hears every dive page read, listed or downloaded, with its history number, on the
  // main thread. Set before the port opens.
  void setPageHandler(std::function<void(int32_t number, const DecodedPage &page)> handler) {
    pageHandler_ = std::move(handler);
  }

  // The listings from now on show what was recorded in the last months (one of
  // kSearchRangeMonths) up to today (main thread).
  void setSearchRange(int months);
  // Appends a row to the log list, on the main thread.
  void addDiveRow(const DiveRecord &dive, int32_t number);
  // One step of the page dump: "lr000" to "lr499", then "lh". The offset is never reset,
  // so a run has one dump.
  void readRequestDiveLog();

  // "Today" for the date range; replaceable in tests.
  std::function<QDate()> today = [] { return QDate::currentDate(); };

 private:
  void receiveHistory(char *bytes, size_t length);  // receive thread
  void receivePage(char *bytes, size_t length);     // receive thread
  void listingPage();
  void downloadPage();
  // Writes page as its CSV file in the log folder and says how it went.
  // Saves the dive as its CSV file; the outcome names the file.
  Outcome saveDive(const DiveRecord &dive) const;
  void pageRead(int32_t number, const DecodedPage &page);  // receive thread
  void endOfIndexSequence(bool sendDetail);
  // Back to idle, with the "#detail" that closes a listing or a download.
  void closeWithDetail();
  void requestPage(int32_t number, bool dropSequenceOnFailure);

  Session &session_;
  SessionContext &context_;
  MainThreadQueue mainThread_;
  QByteArray pageBuffer;                             // receive thread only
  Guarded<QMap<int32_t, DecodedPage>> listedPages_;  // of the last listing, by number
  std::function<void(int32_t, const DecodedPage &)> pageHandler_;
};
