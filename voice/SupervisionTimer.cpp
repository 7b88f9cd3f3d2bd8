#include "SupervisionTimer.h"

#include <QTimer>

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
