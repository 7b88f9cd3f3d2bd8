// mrvtq5dk-shots LANGUAGE FOLDER: pictures of the window for the documentation, taken from
// the simulated device on a pseudo-terminal. Run it with a throw-away HOME: the window saves
// to its Downloads folder and library as it would for a diver.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTableView>
#include <QThread>
#include <cstdio>

#include "DiveProfileView.h"
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

  sim::SimulatedDevice device(ContentsWithClipsOnDives());
  if (device.slavePath().isEmpty()) {
    std::fprintf(stderr, "mrvtq5dk-shots: %s\n", qPrintable(device.error()));
    return 1;
  }
  int status = 1;
  {
    ViewController window;
    window.start();
    window.resize(900, 700);
    window.show();
    window.session().state().deviceExist = 1;
    const SessionState &state = window.session().state();
    auto *dives = window.findChild<QTableView *>(QStringLiteral("view_log_index"));
    auto *profile = window.findChild<DiveProfileView *>();
    if (!window.session().openSerialPort(device.slavePath(), 9600) && RunUntil([&] {
          return state.phase == CONNECTED_IDLE && state.indexSequence == 0 && dives->isEnabled();
        })) {
      // The first dive with a clip spoken during it.
      for (int row = 0; row < dives->model()->rowCount(); ++row) {
        dives->selectRow(row);
        if (profile->clipMarks() > 0) break;
      }
      RunUntil([] { return false; }, 500);  // the closing "#detail" answered, the status settled
      const bool shot =
          Save(window, folder.filePath(QStringLiteral("dive-view-%1.png").arg(language)));
      profile->resize(720, 360);
      status = shot && Save(*profile,
                            folder.filePath(QStringLiteral("dive-clip-mark-%1.png").arg(language)))
                   ? 0
                   : 1;
    } else {
      std::fprintf(stderr, "mrvtq5dk-shots: the simulated device was not listed\n");
    }
  }
  return status;
}
