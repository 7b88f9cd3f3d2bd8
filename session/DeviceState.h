#pragma once

#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

#include "Outcome.h"

// Where the device's session stands, as a diver would put it. The front ends decide from it
// what they offer; the session's own protocol states stay inside the session.
enum class DevicePhase {
  Absent,       // no device's port is open
  Opening,      // a port was just opened; the first "#kind" goes out at the next tick
  Identifying,  // "#kind", "#detail" and "#gser" under way
  Listing,      // identified; the clip index, the dive history and the pages being read
  Idle,         // listed: every request is offered
  Busy,         // a download, or the exchange that ends one, is under way
  Stopped,      // the device stopped answering or the line hung up: Reconnect is offered
};

// What the device said of itself in the handshake; empty until it said it.
struct DeviceIdentity {
  QString model;         // "QM482"
  QString versionText;   // "1.180 JPN QM482 2023-10-01 BAT85": the "#detail" fields shown
  QString serialNumber;  // "28417305"
  bool operator==(const DeviceIdentity &) const = default;
};

// One row of the device's clip or dive list: the device's number for the item and its text.
struct ListedItem {
  int32_t number = 0;
  QString text;
  bool operator==(const ListedItem &) const = default;
};

// Everything the session publishes: the front ends show this and nothing else of it.
struct DeviceState {
  DevicePhase phase = DevicePhase::Absent;
  bool portOpenFailed = false;  // the last port could not be opened
  DeviceIdentity identity;
  QList<ListedItem> clips, dives;      // in list order
  int32_t heldDives = 0;               // how many dives the device holds, listed or not
  std::optional<Operation> operation;  // the one under way
  int clipPercent = 0;                 // of the clip being downloaded
  bool clipUnderWay = false;           // closing now would cut a clip off mid-way
  bool operator==(const DeviceState &) const = default;
};

// The texts of a list's rows.
QStringList RowTexts(const QList<ListedItem> &items);
// The device's numbers of a list's rows.
QList<int32_t> RowNumbers(const QList<ListedItem> &items);
