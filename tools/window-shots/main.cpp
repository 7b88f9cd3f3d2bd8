// mrvtq5dk-shots LANGUAGE FOLDER: pictures of the window for the documentation, taken from
// the simulated device on a pseudo-terminal, and of the library it leaves behind on a small
// screen. Run it with a throw-away HOME: the window saves to its Downloads folder and library
// as it would for a diver.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QThread>
#include <QTimer>
#include <cstdio>
#include <memory>

#include "DiveProfileView.h"
#include "LibraryShelf.h"
#include "Localization.h"
#include "SimulatedDevice.h"
#include "SystemLog.h"
#include "ViewController.h"

namespace {

// Runs the event loop until done() holds; false after timeoutMs.
bool RunUntil(const std::function<bool()> &done, int timeoutMs = 30000) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > timeoutMs) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QThread::msleep(10);
  }
  return true;
}

// The generated contents, with a clip spoken ten minutes into each of the last two dives.
sim::Contents ContentsWithClipsOnDives() {
  sim::Contents contents = sim::GenerateContents(4, QDate::currentDate());
  for (qsizetype i = contents.dives.size() - 2; i < contents.dives.size(); ++i) {
    const int block = 0x300 + 0x20 * int(i);
    contents.clips.append({contents.dives[i].entry.addSecs(600), block, block + 12, 5});
  }
  return contents;
}

// Picks the first dive with a clip spoken during it.
void PickDiveWithClip(QTableView &dives, const DiveProfileView &profile) {
  for (int row = 0; row < dives.model()->rowCount(); ++row) {
    dives.selectRow(row);
    if (profile.clipMarks() > 0) return;
  }
}

bool Save(QWidget &widget, const QString &path) {
  QApplication::processEvents();
  const bool saved = widget.grab().save(path);
  std::printf("%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
  return saved;
}

}  // namespace

int main(int argc, char **argv) {
  QApplication app(argc, argv);
  if (argc != 3) {
    std::fprintf(stderr, "usage: mrvtq5dk-shots en|ja FOLDER\n");
    return 2;
  }
  const QString language = QString::fromLocal8Bit(argv[1]);
  const QDir folder(QString::fromLocal8Bit(argv[2]));
  InstallStringTables(QLocale(language));
  SetSystemLogEcho(false);

  auto device = std::make_unique<sim::SimulatedDevice>(ContentsWithClipsOnDives());
  if (device->slavePath().isEmpty()) {
    std::fprintf(stderr, "mrvtq5dk-shots: %s\n", qPrintable(device->error()));
    return 1;
  }
  // Each box the window opens is read and closed, as a diver would.
  int boxes = 0;
  QTimer answerer;
  QObject::connect(&answerer, &QTimer::timeout, [&boxes] {
    if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
      box->accept();
      ++boxes;
    }
  });
  answerer.start(20);
  const auto shot = [&](QWidget &widget, const char *name) {
    return Save(widget, folder.filePath(QString::fromLatin1(name).arg(language)));
  };
  {
    ViewController window;
    window.start();
    window.resize(900, 700);
    window.show();
    window.session().state().deviceExist = 1;
    const SessionState &state = window.session().state();
    auto *dives = window.findChild<QTableView *>(QStringLiteral("view_log_index"));
    auto *profile = window.findChild<DiveProfileView *>();
    auto *saveAll = window.findChild<QPushButton *>(QStringLiteral("button_save_all_new"));
    auto *status = window.findChild<QLabel *>(QStringLiteral("label_status"));
    if (window.session().openSerialPort(device->slavePath(), 9600) || !RunUntil([&] {
          return state.phase == CONNECTED_IDLE && state.indexSequence == 0 && dives->isEnabled();
        })) {
      std::fprintf(stderr, "mrvtq5dk-shots: the simulated device was not listed\n");
      return 1;
    }
    PickDiveWithClip(*dives, *profile);
    RunUntil([] { return false; }, 500);  // the closing "#detail" answered, the status settled
    if (!shot(window, "dive-view-%1.png")) return 1;
    profile->resize(720, 360);
    if (!shot(*profile, "dive-clip-mark-%1.png")) return 1;

    // Everything saved, then the device unplugged: the lists show the library, on a screen
    // too small for the window's first size.
    RunUntil([&] { return saveAll->isEnabled(); });
    const int boxesBefore = boxes;
    saveAll->click();
    if (!RunUntil([&] { return boxes > boxesBefore; })) {  // the box that tells what was saved
      std::fprintf(stderr, "mrvtq5dk-shots: saving everything new did not end\n");
      return 1;
    }
    device.reset();
    if (!RunUntil([&] {
          const QList<DeviceKey> seen = window.library().devices();
          return !seen.isEmpty() &&
                 status->text() ==
                     Localized("status_browsing_library").arg(ShelfDeviceName(seen.first()));
        })) {
      std::fprintf(stderr, "mrvtq5dk-shots: the library was not shown\n");
      return 1;
    }
    window.resize(800, 560);
    PickDiveWithClip(*dives, *profile);
    RunUntil([] { return false; }, 300);  // the summary laid out in its scrolled page
    if (!shot(window, "window-800x560-%1.png")) return 1;
  }
  return 0;
}
