#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>
#include <thread>

#include "DeviceModel.h"
#include "TestSupport.h"

namespace {

// What the receive thread publishes reaches the main thread's listeners by itself, in one
// signal per change, and a change that changes nothing is not signalled.
TEST(DeviceModel, AChangeFromAnotherThreadIsSignalledOnTheMainThread) {
  DeviceModel model;
  QList<DeviceState> heard;
  QObject::connect(&model, &DeviceModel::changed, [&heard, &model](const DeviceState &state) {
    EXPECT_EQ(QThread::currentThread(), model.thread());
    heard.append(state);
  });
  std::thread([&model] {
    model.update([](DeviceState &state) { state.clips.append({3, "2024/02/11 04:06 2min"}); });
  }).join();
  ASSERT_TRUE(WaitFor([&heard] { return !heard.isEmpty(); }));
  EXPECT_EQ(heard.last().clips.value(0).number, 3);
  model.update([](DeviceState &state) { state.clipPercent = 0; });  // as it was
  QCoreApplication::processEvents();
  EXPECT_EQ(heard.size(), 1);
}

}  // namespace
