#include "AppProcess.h"

#include "TestSupport.h"

AppProcess::AppProcess(const QString &program) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  process_.setProcessEnvironment(environment);
  QObject::connect(&process_, &QProcess::readyReadStandardError,
                   [this] { log_ += process_.readAllStandardError(); });
  process_.start(program, {});
}

AppProcess::~AppProcess() {
  process_.kill();
  process_.waitForFinished();
}

bool AppProcess::waitUntilReady(int timeoutMs) {
  if (!WaitFor([this] { return log_.contains("viewDidLoad end.."); }, timeoutMs)) return false;
  WaitFor([] { return false; }, 500);  // the USB monitor joins the main loop
  return true;
}
