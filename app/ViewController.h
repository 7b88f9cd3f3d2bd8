#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <thread>

#include "DeviceDiscovery.h"
#include "DeviceStack.h"
#include "IndexTable.h"
#include "LibraryReader.h"
#include "LibraryShelf.h"
#include "ListSource.h"
#include "SaveJobPanel.h"
#include "ShownClock.h"

namespace Ui {
class ViewController;
}
class DivePane;
class QComboBox;
class QLabel;
class QPushButton;

// The one window: the device's identity, the voice and dive lists with their download
// buttons and what of them is saved, "Save all new", the date range, and the boxes that
// tell the diver what happened. It shows the device session's published state and turns
// the diver's clicks into the stack's requests.
class ViewController : public QWidget {
 public:
  explicit ViewController(std::unique_ptr<DeviceRegistry> registry = MakePlatformRegistry(),
                          QWidget *parent = nullptr);
  ~ViewController() override;

  // Sets the window up; ends the process with status 1 when the storage folders cannot
  // be made. Call once, before the window is shown.
  void start();
  // After the window is on screen: a device attached before start is refused. Waits for
  // discovery's first pass, which only counts (milliseconds).
  void afterShown();
  // Starts device discovery on a background thread.
  void startDiscovery();
  // The window may close unless a clip is downloading from a connected device.
  bool mayClose() const;

  void reconnectClicked();
  void downloadClipClicked();
  void downloadDiveClicked();
  // Saves every listed item the library does not hold unchanged.
  void saveAllNewClicked();
  // Writes every dive of the device, or the selected ones when several are, as a UDDF
  // logbook file the diver picks, and says in a box how many were written.
  void exportLogbookClicked();
  // The logbook is written: the button comes back and the diver is told.
  void exportEnded(const QString &said);
  // Asks where the logbook goes, suggesting a path; empty when the diver cancels.
  std::function<QString(const QString &suggested)> chooseExportFile;
  // A new search range: stored, and while idle the lists are read again from the device;
  // with no device, the library's lists are read again for the period.
  void rangeChanged();

  Session &session() { return stack_.session; }
  Library &library() { return stack_.library; }
  LogTransfer &logs() { return stack_.logs; }
  // Where the quit guard learns whether a clip is under way.
  std::function<void(bool)> clipUnderWayChanged;
  DeviceDiscovery &discovery() { return discovery_; }

  // A modal information box titled "MrvTq5dk" with one "OK" button.
  void messageBox(const QString &text);

 protected:
  void closeEvent(QCloseEvent *event) override;
  // Back in the window, the diver may have moved or deleted files: the marks are asked again.
  void changeEvent(QEvent *event) override;

 private:
  // Shows the device session's state: the identity, the lists, the controls its phase
  // offers, the clip's progress.
  void render(const DeviceState &state);
  void showLists(const DeviceState &state, const DeviceState &before);
  void offerControls(const DeviceState &state);
  // The rows of the lists, on the chosen clock; offDevice for the library's.
  void showClipRows(const QList<ClipRow> &clips, bool offDevice);
  void showDiveRows(const QList<DiveRow> &dives, bool offDevice);
  // The lists name the clock their times are on.
  void nameClock();
  // The diver may choose the clock the window shows times on.
  void preferencesClicked();
  // A list offered or withdrawn by the session; the library's lists stay as they are.
  void offerList(IndexTable &table, bool offered);
  // The period chosen in the range box, in months; none chosen reads as 0.
  int chosenRangeMonths() const;
  // What the diver sees of an operation's end: the status line, and the box it calls for.
  void showOutcome(const Outcome &outcome);
  // Asks the library which listed rows are saved: the marks, the counts beside the list
  // titles, and whether anything is new.
  void refreshLibraryView();
  // "Save all new" can start when the device is idle, the downloads are offered and
  // something is new.
  void updateSaveAllButton();
  // An item of the device's lists as the window lists it.
  QString itemText(const DeviceLibrary::Item &item) const;
  // The picked rows of a list as library items, in list order.
  QList<DeviceLibrary::Item> selectedItems(ItemKind kind);
  // Runs a job of several items: the device's controls stay grey until it ends.
  void runJob(const std::function<void(std::function<void()> ended)> &start);
  void jobEnded();
  // While connecting and listing, the status line says what is happening.
  void showPhase();
  // The selected dive's profile, summary and the clips spoken during it.
  void showSelectedDive();
  // The player takes the selected clip when the library holds its file.
  void showSelectedClip();
  // A clip's pin on the dive was clicked: it plays, fetched first if not saved yet.
  void playPinnedClip(int pin);
  // Plays the clip when its file is there; false when it is not.
  bool play(const PlayableClip &clip);
  // What the lists show: the library's shelf while it is out, else the device's lists.
  ListSource &lists();
  // Downloads/Mrvtq5dk, which holds the voice and log folders.
  QString programFolder() const;
  // With no device plugged in, the lists show what the library holds of a device: the
  // one chosen, else the one seen last. It is read away from the UI thread and shown when
  // it comes, unless a device has taken the lists meanwhile.
  void askShelf(const std::optional<DeviceKey> &device = std::nullopt);
  // A device chooser shows when the library holds several.
  void showShelf(LibraryShelf shelf);
  // A device is connecting: its own lists take the tables back.
  void putShelfAway();

  std::unique_ptr<Ui::ViewController> ui_;
  IndexTable *clipTable_ = nullptr;  // the device's clips, or the library's
  IndexTable *diveTable_ = nullptr;
  DeviceStack stack_;
  DeviceState shown_;          // what the window shows of the session; main thread
  DeviceDiscovery discovery_;  // goes before the session it opens ports on
  std::thread firstScan_;
  QTimer tickTimer_;
  QTimer phaseTimer_;
  std::unique_ptr<SaveJobPanel> jobPanel_;
  int newItems_ = 0;  // listed rows the library does not hold; main thread
  DivePane *divePane_ = nullptr;
  DeviceListSource deviceLists_{stack_, shown_};
  std::unique_ptr<ShelfListSource> shelf_;  // while the lists show the library; main thread
  bool shelfLooked_ = false;                // the library was asked since the device went
  int shelfAsked_ = 0;  // counts the shelves asked for: only the last one asked is shown
  // Reads the shelves and writes the logbook away from the UI thread; the one under way is
  // waited for when the window goes.
  LibraryReader reader_{stack_.library.path()};
  QLabel *deviceChooserLabel_ = nullptr;
  QComboBox *deviceChooser_ = nullptr;
  QPushButton *preferences_ = nullptr;
  std::optional<int> fetchingPin_;    // the pinned clip being fetched to play; main thread
  ShownClock clock_ = ChosenClock();  // every time the window shows is on this clock
};
