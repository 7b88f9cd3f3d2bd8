#include "PreferencesDialog.h"

#include <QButtonGroup>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "Localization.h"

std::optional<ShownClock> AskShownClock(QWidget *parent, ShownClock current) {
  QDialog dialog(parent);
  dialog.setObjectName(QStringLiteral("preferencesDialog"));
  dialog.setWindowTitle(Localized("preferences_title"));
  auto *layout = new QVBoxLayout(&dialog);
  layout->addWidget(new QLabel(Localized("preferences_clock"), &dialog));
  QButtonGroup clocks(&dialog);
  for (const ShownClock clock : {ShownClock::Japan, ShownClock::Computer}) {
    auto *choice = new QRadioButton(ClockChoice(clock), &dialog);
    choice->setChecked(clock == current);
    clocks.addButton(choice, int(clock));
    layout->addWidget(choice);
  }
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return ShownClock(clocks.checkedId());
}
