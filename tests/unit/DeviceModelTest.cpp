#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>
#include <thread>

#include "DeviceModel.h"
#include "TestSupport.h"

namespace {

// What the receive thread publishes reaches the main thread's listeners by itself; a change
// that changes nothing is not signalled.
TEST(DeviceModel, AChangeFromAnotherThreadIsSignalledOnTheMainThread) {
  DeviceModel model;
  QList<DeviceState> heard;
  QObject::connect(&model, &DeviceModel::changed, [&heard, &model](const DeviceState &state) {
    EXPECT_EQ(QThread::currentThread(), model.thread());
    heard.append(state);
  });
  std::thread([&model] { model.update([](DeviceState &state) { state.heldDives = 7; }); }).join();
  ASSERT_TRUE(WaitFor([&heard] { return !heard.isEmpty(); }));
  model.update([](DeviceState &state) { state.heldDives = 7; });
  QCoreApplication::processEvents();
  EXPECT_EQ(heard.size(), 1);
  EXPECT_EQ(heard[0].heldDives, 7);
}

}  // namespace
