#include "SimOptions.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

namespace sim {

namespace {

QSet<QByteArray> Names(const QVariant &value) {
  QSet<QByteArray> names;
  for (const QString &name : value.toStringList()) {
    for (const QString &part : name.split(u',', Qt::SkipEmptyParts)) names.insert(part.toLatin1());
  }
  return names;
}

// "kind:3,7" -> kind at offsets 3 and 7.
QString AddSplits(const QStringList &texts, QMap<QByteArray, QVector<int>> &splits) {
  for (const QString &text : texts) {
    const qsizetype colon = text.indexOf(u':');
    if (colon <= 0)
      return QStringLiteral("--split needs COMMAND:OFFSET[,OFFSET...], not %1").arg(text);
    QVector<int> offsets;
    for (const QString &offset : text.mid(colon + 1).split(u',', Qt::SkipEmptyParts)) {
      bool ok = false;
      offsets.append(offset.toInt(&ok));
      if (!ok) return QStringLiteral("bad offset in --split %1").arg(text);
    }
    std::sort(offsets.begin(), offsets.end());
    splits[text.left(colon).toLatin1()] = offsets;
  }
  return {};
}

}  // namespace

QString ApplyOptions(const QVariantMap &values, Options &options, Contents &contents) {
  const auto number = [&values](const char *key, auto &target) {
    if (values.contains(QLatin1String(key))) target = values.value(QLatin1String(key)).toLongLong();
  };
  number("rate", options.bytesPerSecond);
  number("latency", options.latencyMs);
  number("split-gap", options.splitGapMs);
  number("stall-after", options.stallAfterBytes);
  number("stall-resume", options.stallResumeMs);
  number("extra-bytes", options.extraBytes);
  number("hangup-after", options.hangupAfterBytes);
  number("detail-fields", contents.detailFields);
  number("total-dives", contents.totalDives);
  number("history-number", contents.historyNumber);
  if (values.contains(QStringLiteral("garbage")))
    options.garbageReplies = Names(values[QStringLiteral("garbage")]);
  if (values.contains(QStringLiteral("silent")))
    options.silentCommands = Names(values[QStringLiteral("silent")]);
  if (values.value(QStringLiteral("long-index")).toBool()) options.longIndex = true;
  if (values.contains(QStringLiteral("model")))
    contents.model = values[QStringLiteral("model")].toString().toLatin1();
  if (values.contains(QStringLiteral("firmware")))
    contents.firmware = values[QStringLiteral("firmware")].toString().toLatin1();
  if (values.contains(QStringLiteral("serial")))
    contents.serialNumber = values[QStringLiteral("serial")].toString().toLatin1();
  if (values.contains(QStringLiteral("held-count")))
    contents.heldCountWord = values[QStringLiteral("held-count")].toInt();
  if (values.contains(QStringLiteral("profile-size"))) {
    for (Dive &dive : contents.dives)
      dive.profileSizeWord = values[QStringLiteral("profile-size")].toInt();
  }
  if (contents.detailFields != 6 && contents.detailFields != 7)
    return QStringLiteral("--detail-fields must be 6 or 7");
  if (values.contains(QStringLiteral("split"))) {
    return AddSplits(values[QStringLiteral("split")].toStringList(), options.splitReplies);
  }
  return {};
}

QString LoadScenario(const QString &path, Contents &contents, Options &options) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
  QJsonParseError error;
  const QJsonObject scenario = QJsonDocument::fromJson(file.readAll(), &error).object();
  if (error.error != QJsonParseError::NoError)
    return QStringLiteral("%1: %2").arg(path, error.errorString());

  const auto time = [](const QJsonValue &value) {
    return QDateTime(QDateTime::fromString(value.toString(), Qt::ISODate).date(),
                     QDateTime::fromString(value.toString(), Qt::ISODate).time(), QTimeZone::utc());
  };
  if (scenario.contains(QStringLiteral("clips"))) {
    contents.clips.clear();
    uint32_t tone = 1;
    for (const QJsonValue &value : scenario[QStringLiteral("clips")].toArray()) {
      const QJsonObject clip = value.toObject();
      contents.clips.append({time(clip[QStringLiteral("start")]),
                             clip[QStringLiteral("first")].toInt(),
                             clip[QStringLiteral("last")].toInt(), tone++});
    }
  }
  if (scenario.contains(QStringLiteral("dives"))) {
    contents.dives.clear();
    uint32_t seed = 1;
    for (const QJsonValue &value : scenario[QStringLiteral("dives")].toArray()) {
      const QJsonObject dive = value.toObject();
      contents.dives.append(GenerateDive(
          seed++, time(dive[QStringLiteral("entry")]), dive[QStringLiteral("minutes")].toInt(45),
          dive[QStringLiteral("sampling")].toInt(10), dive[QStringLiteral("maxDepth")].toInt(1800),
          dive[QStringLiteral("surfaceTemperature")].toInt(260),
          dive[QStringLiteral("bottomTemperature")].toInt(220)));
      contents.dives.last().dayCount = contents.dives.size();
    }
    contents.totalDives = std::max<int>(contents.totalDives, contents.dives.size());
  }
  return ApplyOptions(scenario.toVariantMap(), options, contents);
}

}  // namespace sim
