#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>
#include <cstdio>

#include "ViewController.h"

// Answers every modal box as a diver would, remembering its title and text.
class BoxAnswerer {
 public:
  BoxAnswerer() {
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
      if (box == nullptr) return;
      boxes << box->windowTitle() + "|" + box->text();
      if (echo) std::printf("box:%s\n", qPrintable(boxes.last())), std::fflush(stdout);
      for (QAbstractButton *b : box->buttons()) {
        if (b->text() == button) return b->click();
      }
      box->buttons().first()->click();
    });
    timer_.start(20);
  }
  QStringList boxes;
  QString button = "OK";
  bool echo = false;  // print each box on stdout at once (a child process about to exit)

 private:
  QTimer timer_;
};

// A control of the window by its object name.
template <typename T = QWidget>
T *Outlet(ViewController &window, const char *name) {
  return window.findChild<T *>(QString::fromLatin1(name));
}
