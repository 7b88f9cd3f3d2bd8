#pragma once

#include <QLocale>
#include <QString>
#include <array>

// The text of a key of the program's string tables. A key without a text reads as the
// key itself, so a missing entry shows up on screen instead of an empty box.
QString Localized(const char *key);

// Installs the embedded string tables: English always, as the base, and Japanese on top
// when the locale's language is Japanese. Replaces tables installed before. Needs a
// QCoreApplication. Returns false when a table could not be loaded.
bool InstallStringTables(const QLocale &locale = QLocale::system());

// Resource paths of the compiled tables, for checks of their completeness.
inline constexpr const char *kEnglishStringTable = ":/i18n/mrvtq5dk_en.qm";
inline constexpr const char *kJapaneseStringTable = ":/i18n/mrvtq5dk_ja.qm";

// Every key the program looks up.
inline constexpr std::array<const char *, 54> kStringTableKeys = {
    "initial_error",
    "open_serial_port",
    "target_model_error",
    "recive_fail",
    "retry_recive_fail",
    "download_complete",
    "corvamund_already_exist",
    "Disconnect",
    "label_poweron_message",
    "button_reconnect",
    "label_index_search_range",
    "label_recorded_voice",
    "button_download_voice",
    "label_dive_log",
    "button_download_log",
    "comboBox_index_search_range0",
    "comboBox_index_search_range1",
    "comboBox_index_search_range2",
    "comboBox_index_search_range3",
    "comboBox_index_search_range4",
    "comboBox_index_search_range5",
    "Cancel",
    "Could not save changes while quitting. Quit anyway?",
    "Quitting now will lose any changes you have made since the last successful save",
    "Quit anyway",
    "device_not_answering",
    "device_disconnected",
    "device_busy",
    "transfer_cancelled",
    "item_not_on_device",
    "save_failed",
    "save_error_disk_full",
    "save_error_read_only",
    "save_error_in_the_way",
    "save_error_other",
    "status_connecting",
    "status_reading_voice",
    "status_reading_dive",
    "status_connected",
    "status_downloading",
    "status_saved", "library_set_aside", "button_save_all_new", "open_folder", "list_counts", "list_counts_short_hidden", "row_saved_as", "row_not_saved", "job_item", "job_bytes", "job_time_left", "job_saved", "job_failed", "job_cancelled",
};
