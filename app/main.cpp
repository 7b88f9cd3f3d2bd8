// Mrvtq5dk: takes voice clips and dive logs off a Corvamund QM482 into the Downloads folder.
#include <QApplication>
#include <QCloseEvent>

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
        (!delegate_.windowShouldClose() ||
         delegate_.applicationShouldTerminate() == AppDelegate::TerminateReply::Cancel)) {
      event->ignore();
      return true;
    }
    return false;
  }

 private:
  ViewController &window_;
  AppDelegate &delegate_;
};

}  // namespace

int main(int argc, char **argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Mrvtq5dk"));
  InstallStringTables();

  AppDelegate delegate;
  ViewController window;
  window.isProcessingChanged = [&delegate](bool processing) { delegate.isProcessing = processing; };
  QuitGuard guard(window, delegate);
  window.installEventFilter(&guard);
  window.viewDidLoad();
  window.show();
  delegate.applicationDidFinishLaunching();
  QMetaObject::invokeMethod(
      &window, [&window] { window.viewDidAppear(); }, Qt::QueuedConnection);
  return app.exec();
}
