// Test double: the general-interest message that device discovery acts on.
#pragma once

#define kIOMessageServiceIsTerminated 0xE0000010
