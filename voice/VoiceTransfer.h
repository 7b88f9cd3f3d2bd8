#pragma once

#include <QString>
#include <memory>

#include "ClipDownload.h"
#include "Session.h"
#include "VoiceIndex.h"

// Voice clips through the session: the index reply gathered into the voice list, and the
// clips downloaded from it. Installs its handlers into the session it is given; made on
// the main thread, before the port opens.
class VoiceTransfer {
 public:
  explicit VoiceTransfer(Session &session,
                         std::unique_ptr<SupervisionTimer> clipTimer = MakeQtSupervisionTimer());
  ~VoiceTransfer();
  VoiceTransfer(const VoiceTransfer &) = delete;
  VoiceTransfer &operator=(const VoiceTransfer &) = delete;

  // Downloads the clip of the voice index entry (1-based, as the list's numbers give it)
  // as a WAV file; done hears how it ended, on the main thread.
  void downloadClip(int32_t entry, OutcomeHandler done) { clip_.start(entry, std::move(done)); }
  // Whether the file at path holds a recording other than the clip of entry (its index
  // text); such a file is never replaced. None: every name is free, as without a library.
  void setNameTakenByAnother(std::function<bool(const QString &path, const QString &entry)> check) {
    clip_.nameTakenByAnother = std::move(check);
  }
  VoiceIndexState index() const { return index_.get(); }
  // What the voice list leaves out (main thread): the clips the device holds, and those
  // in the range hidden for being under a minute.
  int heldClips() const { return heldClips_; }
  int hiddenShortClips() const { return hiddenShortClips_; }
  // The index entry text of entry (1-based); empty when the index has none.
  QString entryText(int32_t entry) const;

 private:
  void receiveIndex(char *bytes, size_t length);  // receive thread
  // Rebuilds the voice list from the last index, on the main thread.
  void rebuildVoiceList();

  Session &session_;
  MainThreadQueue mainThread_;
  SessionContext &context_;
  VoiceIndexAccumulator indexReply_;  // receive thread only
  Guarded<VoiceIndexState> index_;
  int heldClips_ = 0, hiddenShortClips_ = 0;  // main thread
  ClipDownload clip_;                         // made after the index it reads
};
