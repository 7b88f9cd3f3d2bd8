#include "UddfWriter.h"

#include <QIODevice>
#include <QLocale>
#include <QXmlStreamWriter>
#include <algorithm>
#include <array>
#include <optional>

#include "DiveFlags.h"
#include "Localization.h"

namespace {

constexpr const char *kNamespace = "http://www.streit.cc/uddf/3.2/";
constexpr double kZeroCelsiusInKelvin = 273.15;

// The sample warnings UDDF has a keyword for; the rest are told in the dive's notes.
struct SampleAlarm {
  int32_t mask;
  const char *keyword;
};
constexpr std::array<SampleAlarm, 4> kSampleAlarms = {
    {{0x01, "ascent"}, {0x02, "deco"}, {0x04, "deco"}, {0x80, "error"}}};

QString Number(double value, int decimals) {
  return QLocale::c().toString(value, 'f', decimals);
}

QString Kelvin(float celsius) {
  return Number(static_cast<double>(celsius) + kZeroCelsiusInKelvin, 2);
}

// An XML ID made of the device's names: letters, digits, '-', '_' and '.' only.
QString IdPart(const QString &text) {
  QString part = text;
  for (QChar &c : part) {
    if (!(c.isLetterOrNumber() && c.unicode() < 128) && c != u'-' && c != u'_' && c != u'.')
      c = u'_';
  }
  return part;
}

QString DeviceId(const UddfLogbook::Device &device) {
  return IdPart(device.model + u'-' + device.serial);
}

// A dive that is written, with the clips recorded during it.
struct PlacedDive {
  const UddfLogbook::Device *device = nullptr;
  const UddfLogbook::Dive *dive = nullptr;
  QList<std::pair<const UddfLogbook::Clip *, int64_t>> clips;  // with seconds into the dive
  QString id() const {
    return QStringLiteral("dive-%1-%2").arg(DeviceId(*device)).arg(dive->number);
  }
};

QString ClipId(const UddfLogbook::Device &device, const UddfLogbook::Clip &clip) {
  return QStringLiteral("clip-%1-%2").arg(DeviceId(device), IdPart(clip.key));
}

QList<PlacedDive> PlaceDives(const UddfLogbook &logbook, UddfWritten &written) {
  QList<PlacedDive> placed;
  for (const UddfLogbook::Device &device : logbook.devices) {
    for (const UddfLogbook::Dive &dive : device.dives) {
      if (dive.record.damage) {
        ++written.damagedDives;
        continue;
      }
      placed << PlacedDive{&device, &dive, {}};
    }
  }
  std::stable_sort(placed.begin(), placed.end(), [](const PlacedDive &a, const PlacedDive &b) {
    return a.dive->record.entry < b.dive->record.entry;
  });
  for (const UddfLogbook::Device &device : logbook.devices) {
    for (const UddfLogbook::Clip &clip : device.clips) {
      for (PlacedDive &dive : placed) {
        if (dive.device != &device) continue;
        if (const auto seconds = SecondsIntoDive(dive.dive->record, clip.start)) {
          dive.clips << std::pair{&clip, *seconds};
          break;
        }
      }
    }
  }
  for (PlacedDive &dive : placed) {
    std::stable_sort(dive.clips.begin(), dive.clips.end(),
                     [](const auto &a, const auto &b) { return a.second < b.second; });
  }
  return placed;
}

// The stretches of samples with the bit set, as "m:ss" or "m:ss–m:ss".
QStringList Stretches(const QList<DiveSample> &samples, int32_t bit) {
  QStringList stretches;
  for (qsizetype k = 0; k < samples.size(); ++k) {
    if (!(samples[k].warningFlags & bit)) continue;
    qsizetype last = k;
    while (last + 1 < samples.size() && (samples[last + 1].warningFlags & bit)) ++last;
    stretches << (last == k ? ElapsedText(samples[k].seconds)
                            : QStringLiteral("%1–%2").arg(ElapsedText(samples[k].seconds),
                                                          ElapsedText(samples[last].seconds)));
    k = last;
  }
  return stretches;
}

class Writer {
 public:
  explicit Writer(QIODevice &out) : xml_(&out) { xml_.setAutoFormatting(true); }

  bool write(const UddfLogbook &logbook, const QList<PlacedDive> &dives) {
    xml_.writeStartDocument();
    xml_.writeDefaultNamespace(QString::fromLatin1(kNamespace));
    xml_.writeStartElement(QStringLiteral("uddf"));
    xml_.writeAttribute(QStringLiteral("version"), QStringLiteral("3.2.3"));
    writeGenerator(logbook);
    writeMedia(dives);
    writeDiver(logbook);
    writeProfiles(dives);
    xml_.writeEndElement();
    xml_.writeEndDocument();
    return !xml_.hasError();
  }

 private:
  void text(const QString &name, const QString &value) { xml_.writeTextElement(name, value); }
  void start(const QString &name, const QString &id = {}) {
    xml_.writeStartElement(name);
    if (!id.isEmpty()) xml_.writeAttribute(QStringLiteral("id"), id);
  }
  void end() { xml_.writeEndElement(); }
  void link(const QString &ref) {
    xml_.writeEmptyElement(QStringLiteral("link"));
    xml_.writeAttribute(QStringLiteral("ref"), ref);
  }

  void writeGenerator(const UddfLogbook &logbook) {
    start(QStringLiteral("generator"));
    text(QStringLiteral("name"), QStringLiteral("Mrvtq5dk"));
    text(QStringLiteral("type"), QStringLiteral("converter"));
    if (!logbook.generatorVersion.isEmpty())
      text(QStringLiteral("version"), logbook.generatorVersion);
    end();
  }

  void writeMedia(const QList<PlacedDive> &dives) {
    const bool any = std::any_of(dives.cbegin(), dives.cend(),
                                 [](const PlacedDive &dive) { return !dive.clips.isEmpty(); });
    if (!any) return;
    start(QStringLiteral("mediadata"));
    for (const PlacedDive &dive : dives) {
      for (const auto &[clip, seconds] : dive.clips) {
        start(QStringLiteral("audio"), ClipId(*dive.device, *clip));
        text(QStringLiteral("objectname"), clip->objectName);
        end();
      }
    }
    end();
  }

  void writeDiver(const UddfLogbook &logbook) {
    if (logbook.devices.isEmpty()) return;
    start(QStringLiteral("diver"));
    start(QStringLiteral("owner"), QStringLiteral("owner"));
    // UDDF asks for the owner's name, which the device does not know.
    start(QStringLiteral("personal"));
    text(QStringLiteral("firstname"), {});
    text(QStringLiteral("lastname"), {});
    end();
    start(QStringLiteral("equipment"));
    for (const UddfLogbook::Device &device : logbook.devices) {
      start(QStringLiteral("divecomputer"), QStringLiteral("dc-") + DeviceId(device));
      text(QStringLiteral("name"), QStringLiteral("Corvamund %1").arg(device.model));
      start(QStringLiteral("manufacturer"), QStringLiteral("maker-") + DeviceId(device));
      text(QStringLiteral("name"), QStringLiteral("Corvamund"));
      end();
      text(QStringLiteral("model"), device.model);
      text(QStringLiteral("serialnumber"), device.serial);
      end();
    }
    end();
    end();
    end();
  }

  void writeProfiles(const QList<PlacedDive> &dives) {
    if (dives.isEmpty()) return;  // a repetition group holds at least one dive
    start(QStringLiteral("profiledata"));
    std::optional<QDate> day;
    for (const PlacedDive &dive : dives) {
      const QDate date = dive.dive->record.entryJapanTime().date();
      if (day != date) {
        if (day) end();
        day = date;
        start(QStringLiteral("repetitiongroup"),
              QStringLiteral("day-") + date.toString(QStringLiteral("yyyy-MM-dd")));
      }
      writeDive(dive);
    }
    if (day) end();
    end();
  }

  void writeDive(const PlacedDive &placed) {
    const DiveRecord &dive = placed.dive->record;
    start(QStringLiteral("dive"), placed.id());
    start(QStringLiteral("informationbeforedive"));
    if (placed.dive->number >= 0)
      text(QStringLiteral("divenumber"), QString::number(placed.dive->number + 1));
    text(QStringLiteral("datetime"), dive.entryJapanTime().toString(Qt::ISODate));
    start(QStringLiteral("equipmentused"));
    link(QStringLiteral("dc-") + DeviceId(*placed.device));
    end();
    end();
    if (!dive.samples.isEmpty()) {
      start(QStringLiteral("samples"));
      for (const DiveSample &sample : dive.samples) writeWaypoint(sample);
      end();
    }
    start(QStringLiteral("informationafterdive"));
    text(QStringLiteral("greatestdepth"), Number(dive.maxDepthMetres(), 2));
    text(QStringLiteral("averagedepth"), Number(dive.averageDepthMetres(), 2));
    text(QStringLiteral("lowesttemperature"), Kelvin(dive.lowestTemperatureCelsius()));
    text(QStringLiteral("diveduration"), QString::number(dive.diveTimeSeconds()));
    writeNotes(placed);
    end();
    end();
  }

  void writeWaypoint(const DiveSample &sample) {
    start(QStringLiteral("waypoint"));
    QStringList alarms;
    for (const SampleAlarm &alarm : kSampleAlarms) {
      const QString keyword = QString::fromLatin1(alarm.keyword);
      if ((sample.warningFlags & alarm.mask) && !alarms.contains(keyword)) alarms << keyword;
    }
    for (const QString &alarm : alarms) text(QStringLiteral("alarm"), alarm);
    text(QStringLiteral("depth"), Number(sample.depthMetres(), 2));
    text(QStringLiteral("divetime"), QString::number(sample.seconds));
    text(QStringLiteral("temperature"), Kelvin(sample.temperatureCelsius()));
    end();
  }

  void writeNotes(const PlacedDive &placed) {
    const DiveRecord &dive = placed.dive->record;
    const QString separator = Localized("list_separator");
    QStringList paras;
    if (dive.warningFlags != 0)
      paras << Localized("uddf_note_warnings")
                   .arg(DiveWarningWords(dive.warningFlags).join(separator));
    if (dive.informationFlags != 0) {
      paras << Localized("uddf_note_information")
                   .arg(InformationWords(dive.informationFlags).join(separator));
    }
    int32_t unalarmed = 0;
    for (const DiveSample &sample : dive.samples) unalarmed |= sample.warningFlags;
    for (const SampleAlarm &alarm : kSampleAlarms) unalarmed &= ~alarm.mask;
    for (int32_t bit = 1; bit <= 0xFF; bit <<= 1) {
      if (!(unalarmed & bit)) continue;
      paras << Localized("uddf_note_sample_warning")
                   .arg(SampleWarningWords(bit).join(separator),
                        Stretches(dive.samples, bit).join(separator));
    }
    if (paras.isEmpty() && placed.clips.isEmpty()) return;  // notes hold at least one item
    start(QStringLiteral("notes"));
    for (const QString &para : paras) text(QStringLiteral("para"), para);
    for (const auto &[clip, seconds] : placed.clips) {
      text(QStringLiteral("para"), Localized("profile_clip").arg(ElapsedText(seconds)));
      link(ClipId(*placed.device, *clip));
    }
    end();
  }

  QXmlStreamWriter xml_;
};

}  // namespace

UddfWritten WriteUddf(QIODevice &out, const UddfLogbook &logbook) {
  UddfWritten written;
  const QList<PlacedDive> dives = PlaceDives(logbook, written);
  written.ok = Writer(out).write(logbook, dives);
  written.dives = static_cast<int>(dives.size());
  for (const PlacedDive &dive : dives) written.clips += static_cast<int>(dive.clips.size());
  return written;
}
