#pragma once

#include <QString>

namespace sim {

// A new pseudo-terminal pair: the master for the simulator, the slave path for the host.
// The line is raw from the start, so nothing the host sends is echoed back before the host
// configures the port itself. Returns -1 and an error text on failure.
int OpenPseudoTerminal(QString &slavePath, QString &error);

}  // namespace sim
