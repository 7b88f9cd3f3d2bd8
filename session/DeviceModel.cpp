#include "DeviceModel.h"

#include <QThread>

DeviceState DeviceModel::state() const {
  std::lock_guard lock(mutex_);
  return state_;
}

void DeviceModel::update(const std::function<void(DeviceState &)> &change) {
  {
    std::lock_guard lock(mutex_);
    change(state_);
  }
  if (QThread::currentThread() == thread()) {
    signalChange();
  } else {
    mainThread_.post([this] { signalChange(); });
  }
}

void DeviceModel::signalChange() {
  DeviceState now = state();
  if (now == signalled_) return;
  signalled_ = now;
  emit changed(now);
}

void DeviceModel::tell(const QString &text) {
  if (QThread::currentThread() == thread()) {
    emit notice(text);
  } else {
    mainThread_.post([this, text] { emit notice(text); });
  }
}
