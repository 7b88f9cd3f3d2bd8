#include "LinkSupervision.h"

#include <QTimer>
#include <algorithm>

#include "Commands.h"
#include "Localization.h"
#include "SessionContext.h"
#include "SystemLog.h"

namespace {

class QtSupervisionTimer : public SupervisionTimer {
 public:
  void start(std::function<void()> tick) override {
    timer_.reset(new QTimer);
    timer_->setInterval(100);
    QObject::connect(timer_.get(), &QTimer::timeout, timer_.get(), std::move(tick));
    timer_->start();
  }
  void invalidate() override {
    if (timer_) timer_->stop();
  }

 private:
  std::unique_ptr<QTimer> timer_;
};

}  // namespace

std::unique_ptr<SupervisionTimer> MakeQtSupervisionTimer() {
  return std::make_unique<QtSupervisionTimer>();
}

LinkSupervision::LinkSupervision(SessionContext &context, std::unique_ptr<SupervisionTimer> timer)
    : context_(context), timer_(std::move(timer)) {}

LinkSupervision::~LinkSupervision() = default;

void LinkSupervision::startWatching() {
  SystemLog("timer1Start");
  timer_->start([this] { watchTick(); });
}

void LinkSupervision::giveUp(Failure failure, const char *key) {
  context_.state.clipRetries = 0;
  if (context_.hooks.closeClipFile) context_.hooks.closeClipFile();
  context_.enableTransferControls();
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, Localized(key), {}});
}

void LinkSupervision::watchTick() {
  SessionState &state = context_.state;
  if (state.receiveType != eSERIAL_RX_VOICE_DATA) return;
  const int64_t expected = state.clipSize;
  const int64_t received = state.clipReceived;
  const double percent = expected > 0 ? double(received) / double(expected) * 100.0 : 100.0;
  context_.window.setProgress(static_cast<int>(std::clamp(percent, 0.0, 100.0)));

  if (received == expected) {
    timer_->invalidate();
    Outcome saved{Operation::DownloadClip, Failure::None, QString(), {}};
    if (context_.hooks.makeWaveFile) saved = context_.hooks.makeWaveFile();
    if (state.clipRetries == 0 && state.cdcwaitLevel >= 1) {
      // A clean clip: ask for a shorter wait; the controls come back with the answer, and
      // the clip's outcome with them.
      --state.cdcwaitLevel;
      context_.transitions.finishWhenIdle(std::move(saved));
      context_.transitions.requestCdcwait();
      return;
    }
    state.clipRetries = 0;
    context_.enableTransferControls();
    context_.transitions.finish(std::move(saved));
    return;
  }

  // A stall is declared on the 51st tick without new bytes, about 5.1 s after the last.
  if (state.clipIdleTicks.fetch_add(1) < kVoiceStallTicks) return;
  timer_->invalidate();
  if (expected - received > kVoiceRetryableShortfall) {
    giveUp(Failure::Stalled, "recive_fail");
    return;
  }
  // A short tail missing, or more bytes than announced: fetch the clip again with a
  // longer wait, at most twice.
  if (context_.hooks.closeClipFile) context_.hooks.closeClipFile();
  if (state.clipRetries >= kVoiceMaxRetries) {
    giveUp(Failure::RetriesExhausted, "retry_recive_fail");
    return;
  }
  ++state.clipRetries;
  if (state.cdcwaitLevel < kHighestCdcwaitLevel) ++state.cdcwaitLevel;
  context_.transitions.requestCdcwait();
}
