#include "DiveLogCsv.h"

#include <QIODevice>
#include <array>
#include <cerrno>

#include "DiveFlags.h"
#include "SystemLog.h"

namespace {

// Writes each piece as it comes, so that a device that fills up stops the text at the
// piece that did not fit. After a refused write nothing more is written.
class PieceWriter {
 public:
  explicit PieceWriter(QIODevice &out) : out_(out) {}

  bool ok() const { return ok_; }
  void operator()(const QByteArray &piece) {
    if (!ok_) return;
    if (out_.write(piece) != piece.size()) {
      // The caller classifies the failure by errno, which the log line must not hide.
      const int systemError = errno;
      SystemLog("exception:%s", qUtf8Printable(out_.errorString()));
      errno = systemError;
      ok_ = false;
    }
  }
  void operator()(const char *text) { (*this)(QByteArray(text)); }
  void operator()(const char *format, auto first, auto... rest) {
    (*this)(QString::asprintf(format, first, rest...).toUtf8());
  }
  // The device's words of the bits set, each followed by a comma.
  template <size_t N>
  void flags(const std::array<DiveFlag, N> &table, int bits) {
    for (const DiveFlag &flag : table) {
      if (bits & flag.mask) (*this)(QByteArray(flag.deviceWord) + ',');
    }
  }

 private:
  QIODevice &out_;
  bool ok_ = true;
};

void WriteSummary(PieceWriter &write, const DiveRecord &dive) {
  write("date,%s\n", qUtf8Printable(dive.entryJapanTime().toString(QStringLiteral("yyyy-MM-dd"))));
  write("entry time,%s\n", qUtf8Printable(dive.entryJapanTime().toString(QStringLiteral("HH:mm"))));
  write("exit time,%s\n", qUtf8Printable(dive.exitJapanTime().toString(QStringLiteral("HH:mm"))));
  write("sampling,%d\n", dive.samplingInterval);
  write("day_count,%d\n", dive.dayCount);
  write("cns,%d\n", dive.cns);
  write("warning,");
  write.flags(kDiveWarningFlags, dive.warningFlags);
  write("\n");
  write("infomation,");
  write.flags(kInformationFlags, dive.informationFlags);
  write("\n");
  write("safe facter,%d\n", dive.safetyFactor);
  write("pressure on entry,%.2f,hPa\n", double(dive.entryPressureHectopascals()));
  write("o2_per,%d\n", dive.oxygenPercent);
  write("dive time,%d\n", dive.diveTimeMinutes);
  write("max depth,%.2f\n", dive.maxDepthMetres());
  write("ave depth,%.2f\n", dive.averageDepthMetres());
  write("temperature,%.1f\n", double(dive.temperatureCelsius()));
  write("profile size,%d\n", dive.profileSize);
  write("otu,%d\n", dive.otu);
  write("body nitrogen,");
  for (size_t i = 0; i + 1 < dive.bodyNitrogen.size(); ++i) write("%d,", dive.bodyNitrogen[i]);
  write("%d,\n\n", dive.bodyNitrogen.back());
  write("profile\ntime,depth,temperature,gas pressure,n2,o2,o2per,warning\n");
}

void WriteSample(PieceWriter &write, const DiveSample &sample) {
  write("%d,%.2f,%.1f,%d,%d,%d,%d,", sample.seconds, sample.depthMetres(),
        double(sample.temperatureCelsius()), sample.gasPressure, sample.nitrogenLevel(),
        sample.oxygenLevel(), sample.oxygenPercent);
  write.flags(kSampleWarningFlags, sample.warningFlags);
  write("\n");
}

void LogPageEnd(const DiveRecord &dive) {
  SystemLog("exception:%s", dive.pageEnd.c_str());
}

}  // namespace

bool WriteDiveLogCsv(QIODevice &out, const DiveRecord &dive) {
  if (dive.reach == PageReach::EndsInSummary) {
    LogPageEnd(dive);
    return false;
  }
  PieceWriter write(out);
  WriteSummary(write, dive);
  for (const DiveSample &sample : dive.samples) WriteSample(write, sample);
  if (dive.reach == PageReach::EndsInProfile && write.ok()) LogPageEnd(dive);
  return write.ok();
}

SaveResult DiveLogCsvSave(const QString &path, const DiveRecord &dive) {
  if (path.isNull()) {
    SystemLog("DiveLogCsvSave:filename is nil!.");
    return {SaveError::Other, QStringLiteral("no file name")};
  }
  if (dive.reach == PageReach::EndsInSummary) {
    // Nothing to save; the folder is not touched.
    LogPageEnd(dive);
    return {SaveError::Other, QString::fromStdString(dive.pageEnd)};
  }
  const SaveResult saved =
      SaveWhole(path, [&dive](QIODevice &file) { return WriteDiveLogCsv(file, dive); });
  if (saved.failedAt == SaveStage::Open && !saved.saved()) {
    SystemLog("DiveLogCsvSave Filename=%s filehandle is nil.", qUtf8Printable(path));
  } else if (saved.failedAt == SaveStage::Commit && !saved.saved()) {
    SystemLog("DiveLogCsvSave Filename=%s commit error:%s", qUtf8Printable(path),
              qUtf8Printable(saved.reason));
  }
  if (!saved.saved()) return saved;
  return {};
}
