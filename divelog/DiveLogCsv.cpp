#include "DiveLogCsv.h"

#include <QFile>
#include <array>
#include <exception>
#include <stdexcept>

#include "DiveLogPage.h"
#include "FieldDecoders.h"
#include "SystemLog.h"

namespace {

struct FlagText {
  int mask;
  const char *text;
};

// The summary and the samples name their bits differently (0x20 is a maximum-depth
// warning in the summary but a depth alarm in a sample); the tables stay apart.
constexpr std::array<FlagText, 7> kSummaryWarningTexts = {{{0x01, "SLOW,"},
                                                           {0x02, "DECO,"},
                                                           {0x04, "DECO_DEPTH,"},
                                                           {0x08, "PO2,"},
                                                           {0x10, "O2,"},
                                                           {0x20, "MAX_DEPTH,"},
                                                           {0x80, "OUT_OF_RANGE,"}}};
constexpr std::array<FlagText, 4> kInformationTexts = {{{0x04, "SENSOR_ERROR,"},
                                                        {0x08, "BATTERY_LOW,"},
                                                        {0x10, "TEMPERATURE_ERROR,"},
                                                        {0x20, "DEVICE_ERROR,"}}};
constexpr std::array<FlagText, 7> kSampleWarningTexts = {{{0x01, "SLOW,"},
                                                          {0x02, "DECO,"},
                                                          {0x04, "DEPTH,"},
                                                          {0x08, "PO2,"},
                                                          {0x10, "O2,"},
                                                          {0x20, "DALM,"},
                                                          {0x80, "OUT,"}}};

// Writes each piece at once, unbuffered, so that a full disk stops the file at the piece
// that did not fit.
class PieceWriter {
 public:
  explicit PieceWriter(QFile &file) : file_(file) {}

  void operator()(const QByteArray &piece) {
    if (file_.write(piece) != piece.size()) {
      throw std::runtime_error(file_.errorString().toStdString());
    }
  }
  void operator()(const char *text) { (*this)(QByteArray(text)); }
  void operator()(const char *format, auto first, auto... rest) {
    (*this)(QString::asprintf(format, first, rest...).toUtf8());
  }
  template <size_t N>
  void flags(const std::array<FlagText, N> &table, int bits) {
    for (const FlagText &flag : table) {
      if (bits & flag.mask) (*this)(QByteArray(flag.text));
    }
  }

 private:
  QFile &file_;
};

void WriteDive(PieceWriter &write, const QByteArray *page, int32_t sampling, int32_t profileSize,
               int32_t warnings, int32_t information, int32_t entryPressure) {
  using namespace DiveLogPage;
  const auto byte = [page](int32_t offset) { return NSDataToInt(page, offset); };
  const auto word = [page](int32_t offset) { return NSData2ToInt(page, offset); };

  write("date,%s\n", qUtf8Printable(NSDataToNSDateJST(page, kYear, kMonth, kDay, kEntryHour,
                                                      kEntryMinute, kFileStyle)));
  write("entry time,%s\n", qUtf8Printable(NSDataToNSTimeJST(page, kYear, kMonth, kDay, kEntryHour,
                                                            kEntryMinute, kListStyle)));
  write("exit time,%s\n", qUtf8Printable(NSDataToNSTimeJST(page, kYear, kMonth, kDay, kExitHour,
                                                           kExitMinute, kListStyle)));
  write("sampling,%d\n", sampling);
  write("day_count,%d\n", byte(kDayCount));
  write("cns,%d\n", byte(kCns));
  write("warning,");
  write.flags(kSummaryWarningTexts, warnings);
  write("\n");
  write("infomation,");
  write.flags(kInformationTexts, information);
  write("\n");
  write("safe facter,%d\n", byte(kSafetyFactor));
  write("pressure on entry,%.2f,hPa\n", double(static_cast<float>(entryPressure) * 5.12f));
  write("o2_per,%d\n", byte(kOxygenPercent));
  write("dive time,%d\n", word(kDiveTimeMinutes));
  write("max depth,%.2f\n", word(kMaxDepth) / 100.0);
  write("ave depth,%.2f\n", word(kAverageDepth) / 100.0);
  write("temperature,%.1f\n", double(DeviceTemperature(word(kTemperature))));
  write("profile size,%d\n", profileSize);
  write("otu,%d\n", word(kOtu));
  write("body nitrogen,");
  for (int32_t i = 0; i < kBodyNitrogenCount - 1; ++i) write("%d,", byte(kBodyNitrogen + i));
  write("%d,\n\n", byte(kBodyNitrogen + kBodyNitrogenCount - 1));
  write("profile\ntime,depth,temperature,gas pressure,n2,o2,o2per,warning\n");

  // The device's profile size is trusted: a size past the profile area reads summary bytes
  // as samples, and one past the page ends the file at the first sample that is not there.
  int32_t time = 0;
  for (int32_t k = 0; k < profileSize; ++k) {
    const int32_t at = k * kSampleBytes;
    const int32_t levels = byte(at + kSampleNitrogenOxygen);
    write("%d,%.2f,%.1f,%d,%d,%d,%d,", time, word(at + kSampleDepth) / 100.0,
          double(DeviceTemperature(word(at + kSampleTemperature))), byte(at + kSampleGasPressure),
          levels >> 4, levels & 0x0F, byte(at + kSampleOxygenPercent));
    write.flags(kSampleWarningTexts, byte(at + kSampleWarningFlags));
    write("\n");
    time += sampling;
  }
}

}  // namespace

bool DiveLogCsvSave(const QString &path, const QByteArray *g_dive_log_buffer) {
  using namespace DiveLogPage;
  if (path.isNull()) {
    SystemLog("DiveLogCsvSave:filename is nil!.");
    return false;
  }
  const QByteArray *page = g_dive_log_buffer;
  QFile file(path);
  try {
    const int32_t sampling = NSDataToInt(page, kSamplingInterval);
    const int32_t profileSize = NSData2ToInt(page, kProfileSize);
    const int32_t warnings = NSDataToInt(page, kWarningFlags);
    const int32_t information = NSDataToInt(page, kInformationFlags);
    const int32_t entryPressure = NSDataToInt(page, kEntryPressure);

    if (file.exists() && !file.remove()) {
      SystemLog("file:%s removeError:%s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    }
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
      SystemLog("DiveLogCsvSave Filename=%s filehandle is nil.", qUtf8Printable(path));
      return false;
    }
    PieceWriter write(file);
    WriteDive(write, page, sampling, profileSize, warnings, information, entryPressure);
  } catch (const std::exception &error) {
    SystemLog("exception:%s", error.what());
    file.close();
    return false;
  }
  file.close();
  return true;
}
