// Mrvtq5dk: takes voice clips and dive logs off a Corvamund QM482 into the Downloads folder.
#include <QApplication>
#include <QCloseEvent>
#include <cstdio>
#include <string_view>

#include "AppDelegate.h"
#include "Localization.h"
#include "ViewController.h"

namespace {

// Routes the window's close through the view controller's veto and the delegate's quit
// guard, as a window delegate would.
class QuitGuard : public QObject {
 public:
  QuitGuard(ViewController &window, AppDelegate &delegate) : window_(window), delegate_(delegate) {}

 protected:
  bool eventFilter(QObject *object, QEvent *event) override {
    if (object == &window_ && event->type() == QEvent::Close &&
        (!delegate_.mayClose() || delegate_.confirmQuit() == AppDelegate::TerminateReply::Cancel)) {
      event->ignore();
      return true;
    }
    return false;
  }

 private:
  ViewController &window_;
  AppDelegate &delegate_;
};

constexpr const char *kUsage = R"(Usage: Mrvtq5dk [-h|--help] [-v|--version] [Qt's options]
Takes voice clips and dive logs off a Corvamund QM482 into the Downloads folder.
Start the window, then plug the device in. See also: man Mrvtq5dk, mrvtq5dk-cli.
)";

// --version and --help are answered before Qt connects to a display, so that they work
// from any terminal. Other arguments are left to Qt, as a launcher may add its own.
bool AnsweredFromTheCommandLine(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--version" || argument == "-v") {
      std::printf("Mrvtq5dk %s\n", MRVTQ5DK_VERSION);
      return true;
    }
    if (argument == "--help" || argument == "-h") {
      std::fputs(kUsage, stdout);
      return true;
    }
  }
  return false;
}

}  // namespace

int main(int argc, char **argv) {
  if (AnsweredFromTheCommandLine(argc, argv)) return 0;
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Mrvtq5dk"));
  InstallStringTables();

  AppDelegate delegate;
  ViewController window;
  window.clipUnderWayChanged = [&delegate](bool processing) { delegate.clipUnderWay = processing; };
  QuitGuard guard(window, delegate);
  window.installEventFilter(&guard);
  window.start();
  window.show();
  delegate.launched();
  QMetaObject::invokeMethod(
      &window, [&window] { window.afterShown(); }, Qt::QueuedConnection);
  return app.exec();
}
