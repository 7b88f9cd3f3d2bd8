// The receive thread's dispatch fed reads the device never sent, in every session state
// and selector: identity, cdcwait, erase and clear replies, the voice index, clip bytes,
// the history record and dive pages.
#include <QByteArray>

#include "FuzzSupport.h"
#include "LogTransfer.h"
#include "ManualTimer.h"
#include "Session.h"
#include "VoiceTransfer.h"

namespace {

constexpr int32_t kSelectors[] = {eSERIAL_RX_RESPONSE, eSERIAL_RX_VOICE_INDEX,
                                  eSERIAL_RX_VOICE_DATA, eSERIAL_RX_LOG_HISTORY,
                                  eSERIAL_RX_LOG_DATA};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzing();
  if (size < 3) return 0;
  Session session;
  VoiceTransfer voice(session, std::make_unique<ManualTimer>());
  LogTransfer logs(session);
  session.context().createFolders();
  SessionState &state = session.state();
  state.phase = data[0] % 19;
  state.receiveType = kSelectors[data[1] % 5];
  state.flowControl = data[2] & 1;
  state.clipSize = (data[2] >> 1) * 4096;
  state.historyCount = data[2] % 4;

  // Then reads as the serial port returns them: two bytes of length - 1 (little-endian,
  // up to 4096), then the bytes.
  for (size_t at = 3; at + 2 < size;) {
    const size_t length =
        std::min<size_t>(1 + (data[at] | data[at + 1] << 8) % 4096, size - at - 2);
    at += 2;
    QByteArray read(reinterpret_cast<const char *>(data + at), qsizetype(length));
    read.append('\0');
    session.receiveLoop().dispatch(read.data(), length);
    at += length;
  }
  return 0;
}
