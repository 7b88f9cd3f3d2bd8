#include "WaveFile.h"

#include <QFile>
#include <QtEndian>
#include <cstring>

#include "SystemLog.h"

namespace {

// A date or time field of an index entry as it goes into a file name. The device sends
// digits; anything that could leave the voice folder or cut the name short (a slash, a
// zero byte, a control character) becomes "_".
QString NameField(QStringView field) {
  QString safe = field.toString();
  for (QChar &c : safe) {
    if (c == u'/' || c == u'\\' || c.category() == QChar::Other_Control) c = u'_';
  }
  return safe;
}

}  // namespace

std::optional<QString> MakeVoiceWaveFileName(const QString &entry, const QString &voiceFolder,
                                             VoiceBlockRing ring) {
  if (entry.size() < kVoiceEntryLength) return std::nullopt;
  const QStringView e(entry);
  return QStringLiteral("%1/20%2-%3-%4_%5-%6_%7_voice.wav")
      .arg(voiceFolder)
      .arg(NameField(e.mid(0, 2)), NameField(e.mid(2, 2)), NameField(e.mid(4, 2)),
           NameField(e.mid(7, 2)), NameField(e.mid(9, 2)),
           QString::number(VoiceMinutes(entry, ring)));
}

QByteArray WaveHeader(uint64_t audioLength) {
  QByteArray header(44, '\0');
  char *h = header.data();
  const auto put32 = [h](int offset, uint32_t value) { qToLittleEndian(value, h + offset); };
  const auto put16 = [h](int offset, uint16_t value) { qToLittleEndian(value, h + offset); };
  std::memcpy(h + 0, "RIFF", 4);
  put32(4, static_cast<uint32_t>(audioLength + 36));
  std::memcpy(h + 8, "WAVEfmt ", 8);
  put32(16, 16);     // format chunk length
  put16(20, 1);      // PCM
  put16(22, 1);      // mono
  put32(24, 8000);   // samples per second
  put32(28, 16000);  // bytes per second
  put16(32, 2);      // bytes per frame
  put16(34, 16);     // bits per sample
  std::memcpy(h + 36, "data", 4);
  put32(40, static_cast<uint32_t>(audioLength));
  return header;
}

bool Bin2wav8k(const QString &binaryFilename, const QString &saveWaveFilename) {
  if (binaryFilename.isNull()) {
    SystemLog("Bin2wav8k:binaryFilename is nil.");
    return false;
  }
  if (saveWaveFilename.isNull()) {
    SystemLog("Bin2wav8k:g_saveWaveFilename is nil.");
    return false;
  }
  QFile clip(binaryFilename);
  if (!clip.open(QIODevice::ReadOnly)) {
    SystemLog("Bin2wav8k binaryFilename filehandle is nil.");
    return false;
  }
  const QByteArray audio = clip.readAll();
  if (clip.error() != QFileDevice::NoError) {
    SystemLog("Bin2wav8k read_data is nil.");
    return false;
  }
  SystemLog("Bin2wav8k read_data read OK.size=%lu.", static_cast<unsigned long>(audio.size()));
  clip.close();

  QString removeError;
  QFile wave(saveWaveFilename);
  if (wave.exists() && !wave.remove()) {
    removeError = wave.errorString();
    SystemLog("file:%s removeError:%s", qUtf8Printable(saveWaveFilename),
              qUtf8Printable(removeError));
  }
  if (!wave.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
    SystemLog("Bin2wav8k Filename=%s filehandle is nil.", qUtf8Printable(saveWaveFilename));
    return false;
  }
  const QByteArray header = WaveHeader(static_cast<uint64_t>(audio.size()));
  if (wave.write(header) != header.size() || wave.write(audio) != audio.size()) {
    // A full disk: keep the received clip, and drop the partial WAV, whose header would
    // promise audio that is not there.
    SystemLog("Bin2wav8k write error:%s", qUtf8Printable(wave.errorString()));
    wave.close();
    wave.remove();
    return false;
  }
  wave.close();

  // A failed removal of an older WAV above is reported again here, even when the clip
  // file goes; support has always seen the two lines together.
  if (!clip.remove()) removeError = clip.errorString();
  if (!removeError.isEmpty()) {
    SystemLog("Bin2wav8k file(%s) delete error: %s", qUtf8Printable(binaryFilename),
              qUtf8Printable(removeError));
  }
  return true;
}
