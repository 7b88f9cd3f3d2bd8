#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <cstdint>
#include <optional>

#include "Outcome.h"

// Where the device's session stands, as a diver would put it. The front ends decide from it
// what they offer; the session's own protocol states stay inside the session.
enum class DevicePhase {
  Absent,       // no device's port is open, or it closed under the session
  Opening,      // a port was just opened; the first "#kind" goes out at the next tick
  Identifying,  // "#kind", "#detail" and "#gser" under way
  Listing,      // identified; the clip index, the dive history and the pages being read
  Idle,         // listed: every request is offered
  Busy,         // a download, or the exchange that ends one, is under way
  Stopped,      // the device stopped answering or the line hung up: Reconnect is offered
};

// What the device said of itself in the handshake; empty until it said it. Kept when the
// device stops answering or goes away, until a port is opened again: what was saved from
// it is still its.
struct DeviceIdentity {
  QString model;         // "QM482"
  double firmware = 0;   // 1.18: the version, as a number to compare
  QStringList detail;    // the "#detail" reply's fields after "OK", as the device sent them
  QString versionText;   // "1.180 JPN QM482 2023-10-01 BAT85": the "#detail" fields shown
  QString serialNumber;  // "28417305"
  bool operator==(const DeviceIdentity &) const = default;
};

// A row of the device's clip list: the clip's index entry (1-based), the text it is listed
// with, and what the device's index says of it.
struct ClipRow {
  int32_t number = 0;
  QString text;
  QDateTime start;    // on the device's clock
  int minutes = 0;    // as the device counts them
  int32_t bytes = 0;  // of audio
  bool operator==(const ClipRow &) const = default;
};

// Why a dive page holds what no device could have recorded: such a page is listed as
// damaged, neither drawn nor saved with the others nor exported.
enum class PageDamage {
  EntryOffCalendar,     // the date or the entry time is not on the calendar
  ExitOffCalendar,      // the exit time is not on the clock
  AverageBelowMaximum,  // the average depth is deeper than the maximum
  WaterTemperature,     // the water was colder than -5 °C or warmer than 50 °C
  Short,                // the page ends inside its summary
};

// A row of the dive list: the dive's history number, the text it is listed with, and its
// summary.
struct DiveRow {
  int32_t number = 0;
  QString text;
  QDateTime entry, exit;  // on the device's clock
  int minutes = 0;        // the dive time, as the device counts it
  double maxDepthMetres = 0;
  float temperatureCelsius = 0;  // the coldest water of the dive
  std::optional<PageDamage> damage;
  bool operator==(const DiveRow &) const = default;
};

// How far the operation under way has come.
struct Progress {
  // The clip's index entry, the dive's history number, or while the dives are listed which
  // of them is being read (1 for the first).
  int32_t item = 0;
  int64_t bytesDone = 0;
  int64_t bytesTotal = 0;  // 0 until known
  // Whole percent, 0 to 100; 0 while the total is unknown.
  int percent() const {
    if (bytesTotal <= 0) return 0;
    return int(std::clamp<int64_t>(bytesDone * 100 / bytesTotal, 0, 100));
  }
  bool operator==(const Progress &) const = default;
};

// Everything the session publishes: the front ends show this and nothing else of it.
struct DeviceState {
  DevicePhase phase = DevicePhase::Absent;
  bool portOpen = false;        // the session's port is open: it may be hung up all the same
  bool portOpenFailed = false;  // the last port could not be opened
  DeviceIdentity identity;
  QList<ClipRow> clips;                // in list order
  QList<DiveRow> dives;                // in list order
  int32_t heldDives = 0;               // how many dives the device holds, listed or not
  std::optional<Operation> operation;  // the one under way
  Progress progress;                   // of the operation under way, or of the last one
  std::optional<Outcome> lastOutcome;  // how the last operation ended
  bool clipUnderWay = false;           // closing now would cut a clip off mid-way
  bool operator==(const DeviceState &) const = default;
};

// The texts of a list's rows.
template <typename Row>
QStringList RowTexts(const QList<Row> &rows) {
  QStringList texts;
  for (const Row &row : rows) texts.append(row.text);
  return texts;
}

// The device's numbers of a list's rows.
template <typename Row>
QList<int32_t> RowNumbers(const QList<Row> &rows) {
  QList<int32_t> numbers;
  for (const Row &row : rows) numbers.append(row.number);
  return numbers;
}
