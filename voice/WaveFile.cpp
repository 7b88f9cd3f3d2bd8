#include "WaveFile.h"

#include <QFile>
#include <QtEndian>
#include <cerrno>
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

QString DistinctWaveFileName(const QString &path,
                             const std::function<bool(const QString &)> &takenByAnother) {
  if (!takenByAnother || !takenByAnother(path)) return path;
  const QString stem = path.chopped(4);  // ".wav"
  for (int n = 2;; ++n) {
    const QString candidate = QStringLiteral("%1-%2.wav").arg(stem).arg(n);
    if (!takenByAnother(candidate)) return candidate;
  }
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

bool WriteWave(QIODevice &out, const QByteArray &audio) {
  const QByteArray header = WaveHeader(static_cast<uint64_t>(audio.size()));
  if (out.write(header) == header.size() && out.write(audio) == audio.size()) return true;
  // The caller classifies the failure by errno, which the log line must not hide.
  const int systemError = errno;
  SystemLog("Bin2wav8k write error:%s", qUtf8Printable(out.errorString()));
  errno = systemError;
  return false;
}

SaveResult Bin2wav8k(const QString &binaryFilename, const QString &saveWaveFilename) {
  if (binaryFilename.isNull()) {
    SystemLog("Bin2wav8k:binaryFilename is nil.");
    return {SaveError::Other, QStringLiteral("no clip file name")};
  }
  if (saveWaveFilename.isNull()) {
    SystemLog("Bin2wav8k:g_saveWaveFilename is nil.");
    return {SaveError::Other, QStringLiteral("no file name")};
  }
  QFile clip(binaryFilename);
  if (!clip.open(QIODevice::ReadOnly)) {
    SystemLog("Bin2wav8k binaryFilename filehandle is nil.");
    return {SaveError::Other, clip.errorString()};
  }
  const QByteArray audio = clip.readAll();
  if (clip.error() != QFileDevice::NoError) {
    SystemLog("Bin2wav8k read_data is nil.");
    return {SaveError::Other, clip.errorString()};
  }
  SystemLog("Bin2wav8k read_data read OK.size=%lu.", static_cast<unsigned long>(audio.size()));
  clip.close();

  const SaveResult saved =
      SaveWhole(saveWaveFilename, [&audio](QIODevice &wave) { return WriteWave(wave, audio); });
  if (saved.failedAt == SaveStage::Open && !saved.saved()) {
    SystemLog("Bin2wav8k Filename=%s filehandle is nil.", qUtf8Printable(saveWaveFilename));
  } else if (saved.failedAt == SaveStage::Commit && !saved.saved()) {
    // The file's writes are buffered, so a full disk mostly shows here.
    SystemLog("Bin2wav8k write error:%s", qUtf8Printable(saved.reason));
  }
  if (!saved.saved()) return saved;

  if (!clip.remove()) {
    SystemLog("Bin2wav8k file(%s) delete error: %s", qUtf8Printable(binaryFilename),
              qUtf8Printable(clip.errorString()));
  }
  return {};
}
