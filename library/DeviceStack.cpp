#include "DeviceStack.h"

bool DeviceStack::list(int months, OutcomeHandler done) {
  logs.setSearchRange(months);
  return session.relist(std::move(done));
}

void DeviceStack::downloadClip(int32_t entry, OutcomeHandler done) {
  deviceLibrary.save(deviceLibrary.item(ItemKind::Clip, entry), std::move(done));
}

void DeviceStack::downloadDive(int32_t number, OutcomeHandler done) {
  deviceLibrary.save(deviceLibrary.item(ItemKind::Dive, number), std::move(done),
                     DeviceLibrary::kOverTheWire);
}

void DeviceStack::cancel() {
  saveAll.cancel();
  session.cancel();
}
