#pragma once

#include <QList>
#include <QString>
#include <functional>
#include <optional>

#include "Library.h"
#include "LogbookExport.h"

class QWidget;

// Asks which dives of the device go to the logbook (the picked ones or all, when several
// are picked; else all) and, through chooseFile, where. None when the diver cancelled.
std::optional<LogbookExportRequest> AskLogbookExport(
    QWidget *parent, const DeviceKey &device, const QList<int32_t> &pickedDives,
    const QString &programFolder, const std::function<QString(const QString &)> &chooseFile);
