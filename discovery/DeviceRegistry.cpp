#include "DeviceRegistry.h"

#include <QStringList>

#if defined(__APPLE__)
#include "IoKitRegistry.h"
#elif defined(__linux__)
#include "UdevRegistry.h"
#endif

QString DescribeProperties(const RegistryProperties &properties) {
  QStringList pairs;
  for (auto property = properties.begin(); property != properties.end(); ++property)
    pairs << QStringLiteral("%1 = %2").arg(property.key(), property.value());
  return QStringLiteral("{") + pairs.join(QStringLiteral("; ")) + QStringLiteral("}");
}

std::unique_ptr<DeviceRegistry> MakePlatformRegistry() {
#if defined(__APPLE__)
  return std::make_unique<IoKitRegistry>();
#elif defined(__linux__)
  return std::make_unique<UdevRegistry>();
#else
#error "device discovery has no registry for this platform yet"
#endif
}
