#pragma once

#include <atomic>

#include "HeadlessWindow.h"

// The window's operations on a terminal: boxes become lines on stderr; labels and lists
// are kept for the job to print, and the selection is the job's.
class TerminalWindow : public HeadlessWindow {
 public:
  void messageBox(const QString &text) override;
  void setText(Outlet outlet, const QString &text) override;
  // Whether the device ever said which model it is.
  bool identified() const { return identified_; }

  bool interactive = false;  // stderr is a terminal: a progress line may need clearing

 private:
  std::atomic<bool> identified_{false};
};
