#pragma once

#include <QLocale>
#include <QString>
#include <array>

// The text of a key of the program's string tables. A key without a text reads as the
// key itself, so a missing entry shows up on screen instead of an empty box.
QString Localized(const char *key);
// The text of a key that counts something, in the form the language gives that count:
// "1 dive", "2 dives" in English, one form in Japanese. Its %n is the count.
QString Localized(const char *key, int count);

// Installs the embedded string tables: English always, as the base, and Japanese on top
// when the locale's language is Japanese; and Qt's own table for the locale's language
// (the file dialog's and the standard buttons' words), where the system has it. Replaces
// tables installed before. Needs a QCoreApplication. Returns false when one of the
// embedded tables could not be loaded; Qt's own is optional.
bool InstallStringTables(const QLocale &locale = QLocale::system());

// Resource paths of the compiled tables, for checks of their completeness.
inline constexpr const char *kEnglishStringTable = ":/i18n/mrvtq5dk_en.qm";
inline constexpr const char *kJapaneseStringTable = ":/i18n/mrvtq5dk_ja.qm";

// Every key the program looks up.
inline constexpr std::array<const char *, 143> kStringTableKeys = {
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
    "library_set_aside", "library_in_use", "library_newer", "button_save_all_new", "open_folder", "list_counts", "list_counts_short_hidden", "row_saved_as", "row_not_saved", "job_item", "job_bytes", "job_time_left", "job_saved", "job_failed", "job_cancelled", "flag_slow", "flag_deco", "flag_deco_depth", "flag_po2", "flag_o2", "flag_max_depth", "flag_depth_alarm", "flag_out_of_range", "flag_sensor_error", "flag_battery_low", "flag_temperature_error", "flag_device_error", "flag_other", "flags_none", "summary_date", "summary_entry_exit", "summary_dive_time", "summary_max_depth", "summary_average_depth", "summary_min_temperature", "summary_warnings", "summary_information", "summary_cns", "summary_otu", "unit_minutes", "unit_metres", "unit_celsius", "profile_no_dive", "profile_no_samples", "profile_axis_time", "profile_axis_depth", "profile_axis_temperature", "profile_readout", "profile_clip", "player_play", "player_stop", "player_no_output", "player_output_lost", "player_cannot_read", "player_not_wave", "player_not_playable", "wave_format", "wave_pcm", "wave_float", "wave_compressed", "wave_mono", "wave_stereo", "wave_channels", "list_separator", "library_device", "row_not_on_device", "shelf_counts", "status_browsing_library", "status_exporting",
    "uddf_note_warnings", "uddf_note_information", "uddf_note_sample_warning", "export_written", "export_no_dives", "export_dives_without_date", "export_unknown_device", "button_export_logbook", "export_which", "export_selected", "export_all", "export_file_filter",
    "row_damaged", "damage_entry", "damage_exit", "damage_depth", "damage_water", "damage_short", "profile_damaged", "dive_damaged_saved", "job_damaged", "clock_japan", "clock_computer", "clock_japan_choice", "clock_computer_choice", "summary_clock", "row_clock", "button_preferences", "preferences_title", "preferences_clock",
    "player_fetching",
    "count_dives",
    "count_voice_clips",
    "saved_folder",
};
