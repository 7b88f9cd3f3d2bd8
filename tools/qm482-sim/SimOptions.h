#pragma once

#include <QString>

#include "DeviceSimulator.h"

namespace sim {

// Reads a scenario file: a JSON object whose keys are the long option names of qm482-sim,
// plus "clips" and "dives" lists that replace the generated ones. Returns an error text.
QString LoadScenario(const QString &path, Contents &contents, Options &options);

}  // namespace sim
