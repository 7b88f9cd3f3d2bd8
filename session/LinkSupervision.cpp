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
    : context_(context), _timer1(std::move(timer)) {}

LinkSupervision::~LinkSupervision() = default;

void LinkSupervision::timer1Start() {
  SystemLog("timer1Start");
  _timer1->start([this] { timer1Call(); });
}

void LinkSupervision::giveUp(Failure failure, const char *key) {
  context_.state.g_voice_retry_count = 0;
  if (context_.hooks.CloseVoiceBinary) context_.hooks.CloseVoiceBinary();
  context_.EnableTransferControls();
  context_.transitions.finish(Outcome{Operation::DownloadClip, failure, Localized(key), {}});
}

void LinkSupervision::timer1Call() {
  SessionState &state = context_.state;
  if (state.g_receive_data_type_is_voice_record != eSERIAL_RX_VOICE_DATA) return;
  const int64_t expected = state.g_voice_data_size;
  const int64_t received = state.g_voice_received_size;
  const double percent = expected > 0 ? double(received) / double(expected) * 100.0 : 100.0;
  context_.window.setProgress(static_cast<int>(std::clamp(percent, 0.0, 100.0)));

  if (received == expected) {
    _timer1->invalidate();
    Outcome saved{Operation::DownloadClip, Failure::None, QString(), {}};
    if (context_.hooks.MakeWaveFile) saved = context_.hooks.MakeWaveFile();
    if (state.g_voice_retry_count == 0 && state.g_cdcwait_level >= 1) {
      // A clean clip: ask for a shorter wait; the controls come back with the answer, and
      // the clip's outcome with them.
      --state.g_cdcwait_level;
      context_.transitions.finishWhenIdle(std::move(saved));
      context_.transitions.requestCdcwait();
      return;
    }
    state.g_voice_retry_count = 0;
    context_.EnableTransferControls();
    context_.transitions.finish(std::move(saved));
    return;
  }

  // A stall is declared on the 51st tick without new bytes, about 5.1 s after the last.
  if (state.g_voice_idle_ticks.fetch_add(1) < kVoiceStallTicks) return;
  _timer1->invalidate();
  if (expected - received > kVoiceRetryableShortfall) {
    giveUp(Failure::Stalled, "recive_fail");
    return;
  }
  // A short tail missing, or more bytes than announced: fetch the clip again with a
  // longer wait, at most twice.
  if (context_.hooks.CloseVoiceBinary) context_.hooks.CloseVoiceBinary();
  if (state.g_voice_retry_count >= kVoiceMaxRetries) {
    giveUp(Failure::RetriesExhausted, "retry_recive_fail");
    return;
  }
  ++state.g_voice_retry_count;
  if (state.g_cdcwait_level < kHighestCdcwaitLevel) ++state.g_cdcwait_level;
  context_.transitions.requestCdcwait();
}
