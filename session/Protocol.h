#pragma once

#include <array>
#include <cstdint>

// The wire protocol's session states and receive-data selectors. The receive thread routes
// each read by them; whoever sends a command sets them first.

enum SessionStatus : int32_t {
  TRY_CONNECT_TX_KIND = 0,
  TRY_CONNECT_RX_KIND = 2,
  TRY_CONNECT_KIND_DONE = 3,
  TRY_CONNECT_TX_DETAIL = 4,
  TRY_CONNECT_RX_DETAIL = 5,
  TRY_CONNECT_DETAIL_DONE = 6,
  TRY_CONNECT_TX_GSER = 7,
  TRY_CONNECT_RX_GSER = 8,
  CONNECTED_IDLE = 9,
  TRY_RX_VOICE_WAIT = 10,
  TRY_TX_VOICE_RETRY = 11,
  TRY_TX_VOICE_INDEX = 12,
  RX_VOICE_INDEX = 13,
  TRY_TX_LOG_HISTORY = 14,
  RX_LOG_HISTORY = 15,
  RX_ERASE_ALL_RECORDED_VOICE = 16,
  RX_CLEAR_LOG_HISTORY = 17,
  DISCONNECTED = 18,
};

enum ReceiveDataType : int32_t {
  eSERIAL_RX_RESPONSE = 0,
  eSERIAL_RX_VOICE_INDEX = 2,
  eSERIAL_RX_VOICE_DATA = 3,
  eSERIAL_RX_LOG_HISTORY = 4,
  eSERIAL_RX_LOG_DATA = 5,
};

// "TRY_CONNECT_RX_KIND" for 2; "" for values without a name.
const char *SessionStatusName(int32_t status);

// Arguments of "#cdcwait", by wait level. Only the first four are graded waits, but the
// level climbs to 15 after repeated stalls and the device is sent the later entries as
// they stand; devices in the field have always been sent these values.
inline constexpr std::array<int32_t, 16> CDCWAIT_LEVELS = {0,  5,  8,    15, 2,   1959, 1000, 1023,
                                                           32, 64, 4096, 0,  500, 256,  0,    0};
inline constexpr int32_t kHighestCdcwaitLevel = 15;

// Clip bytes the device sends in "vh" mode before it waits for "vx".
inline constexpr int32_t kVoiceAcknowledgeBytes = 2040;
// Supervision ticks (0.1 s) without clip bytes before a stall is declared.
inline constexpr int32_t kVoiceStallTicks = 50;
// A stalled clip missing more than this is given up at once; a shorter tail is retried.
inline constexpr int32_t kVoiceRetryableShortfall = 2047;
inline constexpr int32_t kVoiceMaxRetries = 2;

inline constexpr unsigned kDeviceBaudRate = 9600;

// A reply that has not moved for this long is not coming: the device stopped answering.
// Measured from the last byte received (or the request, if nothing came back).
inline constexpr int64_t kReplyDeadlineMs = 10'000;
// A new exchange starts only once the line has been quiet this long, so that the tail of
// an earlier reply is not read as the start of the next one.
inline constexpr int64_t kQuietLineMs = 200;
inline constexpr char kPowerOffMessage[] = "Corvamund power is off";
