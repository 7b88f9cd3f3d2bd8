#pragma once

#include <QString>
#include <functional>

// What a front end asked the session to do.
enum class Operation { ConnectAndList, DownloadClip, DownloadDive };

// How an operation ended. Each failure names what a diver can do about it; the sentence
// says it in the user's language.
enum class Failure {
  None,
  NoPort,            // the port is not open, or a command could not be written
  WrongModel,        // the device is not a QM482
  IdentityRefused,   // the device answered the identity questions with nonsense
  NotAnswering,      // no reply within the deadline
  Unplugged,         // the line went away during the operation
  Stalled,           // a clip stopped with too much missing to fetch again
  RetriesExhausted,  // a clip stalled three times
  Abandoned,         // the device did not take the new pacing; the clip was dropped
  CannotSave,        // the file could not be written (disk full, read-only, in the way)
  CannotMakeFolder,  // the storage folders could not be made
  Busy,              // another operation, or a handshake, is under way
  NotOnDevice,       // no such clip or dive in the lists read from the device
  Cancelled,
};

struct Outcome {
  Operation operation = Operation::ConnectAndList;
  Failure failure = Failure::None;
  QString sentence;  // for the user: the box text, or the line the command line prints
  QString path;      // the file saved, for a download that succeeded

  bool ok() const { return failure == Failure::None; }
  bool operator==(const Outcome &) const = default;
};

using OutcomeHandler = std::function<void(const Outcome &)>;
