#pragma once

#include <QString>
#include <cstddef>

class SessionContext;

// The text replies of the handshake, the erase and the clear, judged by the session state
// alone: there is no header on the wire to say what a reply is. The answer to "#cdcwait"
// goes to the clip download, which asked for it.
class IdentityReplies {
 public:
  explicit IdentityReplies(SessionContext &context) : context_(context) {}

  // One read of the receive thread while the selector is eSERIAL_RX_RESPONSE; text is
  // followed by a terminating zero.
  void handle(const char *text, size_t length);

 private:
  void modelReply(const char *text, size_t length);
  void detailReply(const char *text);
  void serialNumberReply(const char *text);
  void eraseReply(const char *text);
  void clearReply(const char *text);
  // An identity reply that makes no sense: the handshake ends, disconnected.
  void refuse();

  SessionContext &context_;
};

// The firmware version from the detail reply's version field: only "0123456789." kept,
// read as a number ("V1.2" reads 1.2; nothing readable reads 0).
double FirmwareVersion(const QString &field);
