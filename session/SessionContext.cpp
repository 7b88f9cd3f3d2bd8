#include "SessionContext.h"

#include <QMetaObject>
#include <QTimer>
#include <chrono>

SessionContext::SessionContext() {
  operation.changed = [this](std::optional<Operation> underWay, const Outcome *ended) {
    model.update([underWay, ended](DeviceState &published) {
      published.operation = underWay;
      if (underWay) published.progress = {};
      if (ended) published.lastOutcome = *ended;
    });
    transitions.publishPhase();
  };
}

void SessionContext::whenLineQuiet(std::function<void()> start) {
  pollQuiet(std::move(start), clockMs() + kReplyDeadlineMs);
}

void SessionContext::pollQuiet(std::function<void()> start, int64_t giveUpAt) {
  if (!channel.isOpen()) {  // unplugged or hung up while the request waited
    transitions.portGoneBeforeRequest();
    return;
  }
  if (transitions.lineQuiet() || clockMs() >= giveUpAt) {
    start();
    return;
  }
  QTimer::singleShot(kQuietLineMs / 4, &anchor_,
                     [this, start = std::move(start), giveUpAt]() mutable {
                       pollQuiet(std::move(start), giveUpAt);
                     });
}

int64_t SteadyClockMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void SessionContext::clearClips() {
  model.update([](DeviceState &published) { published.clips.clear(); });
}

void SessionContext::clearDives() {
  model.update([](DeviceState &published) { published.dives.clear(); });
}

bool SessionContext::createFolders(QString *error) {
  StoragePaths paths = state.paths.get();
  const bool created = ::CreateFolder(paths, downloadsFolder(), [this, error](const QString &text) {
    if (error) {
      *error = text;
    } else {
      model.tell(text);
    }
  });
  state.paths.set(paths);
  return created;
}
