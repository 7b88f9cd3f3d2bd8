#include "IdentityReplies.h"

#include <QRegularExpression>
#include <cstdlib>
#include <cstring>

#include "Localization.h"
#include "SessionContext.h"
#include "SystemLog.h"
#include "TextValues.h"

namespace {

// Firmware from this version on paces clips in windows acknowledged with "vx".
constexpr double kFlowControlVersion = 1.175;

}  // namespace

double FirmwareVersion(const QString &field) {
  QString digits;
  for (QChar c : field) {
    if ((c >= u'0' && c <= u'9') || c == u'.') digits += c;
  }
  // The device writes "1.180" whatever the diver's language: never read it by the
  // locale's rules, where the decimal point may be a comma.
  return LeadingDecimal(digits);
}

void IdentityReplies::refuse() {
  context_.transitions.disconnect(Failure::IdentityRefused, QString(), Transitions::kNoReconnect);
}

void IdentityReplies::handle(const char *text, size_t length) {
  const int32_t status = context_.state.phase;
  switch (status) {
    case TRY_CONNECT_RX_KIND:
    case TRY_CONNECT_RX_DETAIL:
    case TRY_CONNECT_RX_GSER:
    case TRY_RX_VOICE_WAIT:
    case RX_ERASE_ALL_RECORDED_VOICE:
    case RX_CLEAR_LOG_HISTORY:
      SystemLog("g_serial_port_status == %s.", SessionStatusName(status));
      break;
    default:
      SystemLog("Reciving other commands:%s", text);
      // The answer to the "#detail" that closed a listing or a download.
      context_.state.trailingReplyPending = false;
      return;
  }
  switch (status) {
    case TRY_CONNECT_RX_KIND:
      return modelReply(text, length);
    case TRY_CONNECT_RX_DETAIL:
      return detailReply(text);
    case TRY_CONNECT_RX_GSER:
      return serialNumberReply(text);
    case TRY_RX_VOICE_WAIT:
      if (context_.hooks.cdcwaitReply) context_.hooks.cdcwaitReply(text);
      return;
    case RX_ERASE_ALL_RECORDED_VOICE:
      return eraseReply(text);
    case RX_CLEAR_LOG_HISTORY:
      return clearReply(text);
  }
}

void IdentityReplies::modelReply(const char *text, size_t length) {
  // The first 11 bytes decide; whatever follows them is not looked at.
  static constexpr char kModelReply[] = "OK QM482CS\r";
  if (length >= 11 && std::memcmp(text, kModelReply, 11) == 0) {
    context_.transitions.enter(TRY_CONNECT_KIND_DONE);
    context_.model.update(
        [](DeviceState &published) { published.identity.model = QStringLiteral("QM482"); });
    return;
  }
  context_.transitions.disconnect(Failure::WrongModel, Localized("target_model_error"),
                                  Transitions::kNoReconnect);
}

void IdentityReplies::detailReply(const char *text) {
  SessionState &state = context_.state;
  state.flowControl = 0;
  // Control characters, the line end among them, are not part of any field.
  static const QRegularExpression kControl(QStringLiteral("\\p{Cc}"));
  QString reply = DecodeUtf8Strict(QByteArrayView(text, qsizetype(std::strlen(text))));
  if (!reply.isNull()) reply.remove(kControl);
  const QStringList values = SplitAtBlanks(reply);
  if (values.isEmpty()) {
    refuse();
    SystemLog("values.count 0. disconnect.");
    return;
  }
  if (values[0] != u"OK" || (values.size() != 6 && values.size() != 7)) {
    refuse();
    SystemLog("values.count %ld. disconnect.", long(values.size()));
    return;
  }
  const bool seven = values.size() == 7;
  const QString versionText = QStringList{values[1], values[seven ? 5 : 4], values[2],
                                          values[seven ? 4 : 3], values[seven ? 6 : 5]}
                                  .join(u' ');
  const double firmware = FirmwareVersion(values[1]);
  context_.model.update([&](DeviceState &published) {
    published.identity.firmware = firmware;
    published.identity.detail = values.mid(1);
    published.identity.versionText = versionText;
  });
  if (firmware >= kFlowControlVersion) state.flowControl = 1;
  context_.transitions.enter(TRY_CONNECT_DETAIL_DONE);
}

void IdentityReplies::serialNumberReply(const char *text) {
  SessionState &state = context_.state;
  const QStringList values =
      SplitAtBlanks(DecodeUtf8Strict(QByteArrayView(text, qsizetype(std::strlen(text)))));
  if (values.size() != 5 || values[0] != u"OK") {
    refuse();
    return;
  }
  context_.model.update(
      [&values](DeviceState &published) { published.identity.serialNumber = values[3]; });
  if (state.indexSequence == 1) {
    context_.transitions.enter(TRY_TX_VOICE_INDEX);
  } else {
    context_.transitions.enter(CONNECTED_IDLE);
    context_.transitions.offerRequests(true);
    context_.transitions.finish(
        Outcome{Operation::ConnectAndList, Failure::None, Localized("status_connected"), {}});
  }
}

void IdentityReplies::eraseReply(const char *text) {
  if (std::strstr(text, "EraceAllVoiceData") == nullptr) return;
  context_.model.tell(std::strstr(text, "Success") ? QStringLiteral("Erace successful!")
                                                   : QStringLiteral("Erace failure!"));
}

void IdentityReplies::clearReply(const char *text) {
  if (std::strstr(text, "Dive") == nullptr || std::strstr(text, "history") == nullptr) return;
  context_.model.tell(std::strstr(text, "OK") ? QStringLiteral("Clear successful!")
                                              : QStringLiteral("Clear failure!"));
}
