#pragma once

#include <QFile>
#include <QString>
#include <memory>
#include <mutex>

#include "Session.h"
#include "VoiceIndex.h"

// Voice clips through the session: the index reply gathered into the voice list, and the
// download of the selected clip into the temporary file, acknowledged with "vx" in windows
// of 2040 bytes on newer firmware, then written as a WAV file. Installs its handlers into
// the session it is given; made on the main thread, before the port opens.
class VoiceTransfer {
 public:
  explicit VoiceTransfer(Session &session);
  ~VoiceTransfer();
  VoiceTransfer(const VoiceTransfer &) = delete;
  VoiceTransfer &operator=(const VoiceTransfer &) = delete;

  // Downloads the clip of the voice index entry (1-based, as the list's numbers give it)
  // as a WAV file; done hears how it ended, on the main thread. Refused at once while the
  // session is not idle or the storage folders cannot be made.
  void downloadClip(int32_t entry, OutcomeHandler done);

  // Requests the clip being downloaded (main thread). Also the retry after a "#cdcwait"
  // exchange.
  void downloadClip();
  // Rebuilds the voice list from the last index, on the main thread.
  void rebuildVoiceList();
  // Ends a complete clip: closes the file and writes the WAV file; the outcome says
  // whether it was saved.
  Outcome makeWaveFile();
  // Closes the temporary clip file; bytes arriving later are dropped.
  void closeClipFile();

  VoiceIndexState index() const { return index_.get(); }
  // What the voice list leaves out (main thread): the clips the device holds, and those
  // in the range hidden for being under a minute.
  int heldClips() const { return heldClips_; }
  int hiddenShortClips() const { return hiddenShortClips_; }
  // The index entry text of entry (1-based); empty when the index has none.
  QString entryText(int32_t entry) const;

  // Whether the file at path holds a recording other than the clip of entry (its index
  // text); such a file is never replaced. None: every name is free, as without a library.
  std::function<bool(const QString &path, const QString &entry)> nameTakenByAnother;

 private:
  void receiveIndex(char *bytes, size_t length);  // receive thread
  void receiveClip(char *bytes, size_t length);   // receive thread
  void fail(Failure failure, const QString &sentence);

  Session &session_;
  MainThreadQueue mainThread_;
  SessionContext &context_;
  VoiceIndexAccumulator indexReply_;  // receive thread only
  Guarded<VoiceIndexState> index_;
  QString waveFileName_;                      // main thread
  int32_t entry_ = 0;                         // the index entry being downloaded; main thread
  int heldClips_ = 0, hiddenShortClips_ = 0;  // main thread
  std::mutex fileMutex_;
  std::unique_ptr<QFile> clipFile_;  // opened on the main thread, written on the receive thread
};
