#pragma once

#include "DeviceLibrary.h"
#include "Library.h"
#include "LogTransfer.h"
#include "SaveAllNew.h"
#include "SearchRange.h"
#include "Session.h"
#include "VoiceTransfer.h"

// Everything that talks to one device and keeps what it gave: the session, the clip and
// dive transfers, the library and the "save all new" job, wired together the same way for
// every front end. The diver's requests are calls that end in an outcome. Main thread.
class DeviceStack {
 public:
  DeviceStack() = default;
  DeviceStack(const DeviceStack &) = delete;
  DeviceStack &operator=(const DeviceStack &) = delete;

  // Sets the period the listings show, in months (one of kSearchRangeMonths), and reads
  // both lists again when the device is idle; false when nothing was asked of it (the
  // period still holds for the next listing).
  bool list(int months, OutcomeHandler done);
  // Saves a listed clip (its index entry) and records the file.
  void downloadClip(int32_t entry, OutcomeHandler done);
  // Asks the device for a listed dive (its history number) again and saves it.
  void downloadDive(int32_t number, OutcomeHandler done);
  // Stops the job and the operation under way; what is complete stays saved.
  void cancel();

  Session session;
  VoiceTransfer voice{session};
  LogTransfer logs{session};
  Library library;
  DeviceLibrary deviceLibrary{session, voice, logs, library};
  SaveAllNew saveAll{session, deviceLibrary};
};
