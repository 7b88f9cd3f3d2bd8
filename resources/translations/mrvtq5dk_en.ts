<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name></name>
    <message id="initial_error">
        <source>initial_error</source>
        <translation>Could not open the device's port. Unplug the device and plug it in again.</translation>
    </message>
    <message id="open_serial_port">
        <source>open_serial_port</source>
        <translation>Connecting to the device…</translation>
    </message>
    <message id="target_model_error">
        <source>target_model_error</source>
        <translation>This device is not a QM482. Connect a Corvamund QM482.</translation>
    </message>
    <message id="recive_fail">
        <source>recive_fail</source>
        <translation>The download stopped: the device sent no more data. Check the cable and try again.</translation>
    </message>
    <message id="retry_recive_fail">
        <source>retry_recive_fail</source>
        <translation>The download failed after two retries. Check the cable and try again.</translation>
    </message>
    <message id="download_complete">
        <source>download_complete</source>
        <translation>Download complete.
</translation>
    </message>
    <message id="corvamund_already_exist">
        <source>corvamund_already_exist</source>
        <translation>A Corvamund device was already connected when Mrvtq5dk started. Unplug it, start Mrvtq5dk again, then plug the device in.</translation>
    </message>
    <message id="Disconnect">
        <source>Disconnect</source>
        <translation>Disconnected</translation>
    </message>
    <message id="label_poweron_message">
        <source>label_poweron_message</source>
        <translation>Turn the device on and connect it with the USB cable.</translation>
    </message>
    <message id="button_reconnect">
        <source>button_reconnect</source>
        <translation>Reconnect</translation>
    </message>
    <message id="label_index_search_range">
        <source>label_index_search_range</source>
        <translation>Period shown</translation>
    </message>
    <message id="label_recorded_voice">
        <source>label_recorded_voice</source>
        <translation>Voice recordings</translation>
    </message>
    <message id="button_download_voice">
        <source>button_download_voice</source>
        <translation>Download voice</translation>
    </message>
    <message id="label_dive_log">
        <source>label_dive_log</source>
        <translation>Dive logs</translation>
    </message>
    <message id="button_download_log">
        <source>button_download_log</source>
        <translation>Download log</translation>
    </message>
    <message id="comboBox_index_search_range0">
        <source>comboBox_index_search_range0</source>
        <translation>1 month</translation>
    </message>
    <message id="comboBox_index_search_range1">
        <source>comboBox_index_search_range1</source>
        <translation>3 months</translation>
    </message>
    <message id="comboBox_index_search_range2">
        <source>comboBox_index_search_range2</source>
        <translation>6 months</translation>
    </message>
    <message id="comboBox_index_search_range3">
        <source>comboBox_index_search_range3</source>
        <translation>1 year</translation>
    </message>
    <message id="comboBox_index_search_range4">
        <source>comboBox_index_search_range4</source>
        <translation>2 years</translation>
    </message>
    <message id="comboBox_index_search_range5">
        <source>comboBox_index_search_range5</source>
        <translation>5 years</translation>
    </message>
    <message id="Cancel">
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message id="Could not save changes while quitting. Quit anyway?">
        <source>Could not save changes while quitting. Quit anyway?</source>
        <translation>Could not save changes while quitting. Quit anyway?</translation>
    </message>
    <message id="Quitting now will lose any changes you have made since the last successful save">
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <translation>Quitting now will lose any changes you have made since the last successful save.</translation>
    </message>
    <message id="Quit anyway">
        <source>Quit anyway</source>
        <translation>Quit anyway</translation>
    </message>
    <message id="device_not_answering">
        <source>device_not_answering</source>
        <translation>The device stopped answering. Check the cable, then press Reconnect or plug the device in again.</translation>
    </message>
    <message id="device_disconnected">
        <source>device_disconnected</source>
        <translation>The device was disconnected. Plug it in again to go on.</translation>
    </message>
    <message id="device_busy">
        <source>device_busy</source>
        <translation>The device is busy. Wait until the current transfer has ended.</translation>
    </message>
    <message id="transfer_cancelled">
        <source>transfer_cancelled</source>
        <translation>The transfer was cancelled.</translation>
    </message>
    <message id="item_not_on_device">
        <source>item_not_on_device</source>
        <translation>That item is no longer on the device. Read the lists again with Reconnect.</translation>
    </message>
    <message id="save_failed">
        <source>save_failed</source>
        <translation>%1 could not be saved: %2</translation>
    </message>
    <message id="save_error_disk_full">
        <source>save_error_disk_full</source>
        <translation>the disk is full.</translation>
    </message>
    <message id="save_error_read_only">
        <source>save_error_read_only</source>
        <translation>the folder cannot be written to.</translation>
    </message>
    <message id="save_error_in_the_way">
        <source>save_error_in_the_way</source>
        <translation>something else of that name is in the way.</translation>
    </message>
    <message id="save_error_other">
        <source>save_error_other</source>
        <translation>%1.</translation>
    </message>
    <message id="status_connecting">
        <source>status_connecting</source>
        <translation>Connecting...</translation>
    </message>
    <message id="status_reading_voice">
        <source>status_reading_voice</source>
        <translation>Reading the voice clips...</translation>
    </message>
    <message id="status_reading_dive">
        <source>status_reading_dive</source>
        <translation>Reading dive %1 of %2</translation>
    </message>
    <message id="status_connected">
        <source>status_connected</source>
        <translation>Connected.</translation>
    </message>
    <message id="status_downloading">
        <source>status_downloading</source>
        <translation>Downloading %1...</translation>
    </message>
    <message id="library_set_aside">
        <source>library_set_aside</source>
        <translation>The library of saved files could not be read; it was set aside as %1 and a new one was started. Your files are untouched.</translation>
    </message>
    <message id="library_in_use">
        <source>library_in_use</source>
        <translation>The library of saved files is held by another program and could not be shared: what you save this time is not remembered in it. Your files are untouched.</translation>
    </message>
    <message id="library_newer">
        <source>library_newer</source>
        <translation>The library of saved files was written by a newer version of Mrvtq5dk and is left as it is: this version does not remember what you save in it. Your files are untouched.</translation>
    </message>
    <message id="button_save_all_new">
        <source>button_save_all_new</source>
        <translation>Save all new</translation>
    </message>
    <message id="open_folder">
        <source>open_folder</source>
        <translation>Open folder</translation>
    </message>
    <message id="list_counts">
        <source>list_counts</source>
        <translation>%1 of %2 shown, %3 new</translation>
    </message>
    <message id="list_counts_short_hidden">
        <source>list_counts_short_hidden</source>
        <translation>%1 of %2 shown, %3 new, %4 short hidden</translation>
    </message>
    <message id="row_saved_as">
        <source>row_saved_as</source>
        <translation>Saved as %1</translation>
    </message>
    <message id="row_not_saved">
        <source>row_not_saved</source>
        <translation>Not saved yet</translation>
    </message>
    <message id="job_item">
        <source>job_item</source>
        <translation>Saving %1 (%2 of %3)</translation>
    </message>
    <message id="job_bytes">
        <source>job_bytes</source>
        <translation>%1 of %2 kB</translation>
    </message>
    <message id="job_time_left">
        <source>job_time_left</source>
        <translation>about %1 s left</translation>
    </message>
    <message id="job_saved" numerus="yes">
        <source>job_saved</source>
        <translation>
            <numerusform>Saved %n item.</numerusform>
            <numerusform>Saved %n items.</numerusform>
        </translation>
    </message>
    <message id="job_failed" numerus="yes">
        <source>job_failed</source>
        <translation>
            <numerusform>Could not save %n item:</numerusform>
            <numerusform>Could not save %n items:</numerusform>
        </translation>
    </message>
    <message id="job_cancelled">
        <source>job_cancelled</source>
        <translation>Cancelled. What was not saved yet is still new on the device.</translation>
    </message>
    <message id="flag_slow">
        <source>flag_slow</source>
        <translation>Ascent too fast</translation>
    </message>
    <message id="flag_deco">
        <source>flag_deco</source>
        <translation>Decompression stop required</translation>
    </message>
    <message id="flag_deco_depth">
        <source>flag_deco_depth</source>
        <translation>Above the decompression stop depth</translation>
    </message>
    <message id="flag_po2">
        <source>flag_po2</source>
        <translation>Oxygen partial pressure too high</translation>
    </message>
    <message id="flag_o2">
        <source>flag_o2</source>
        <translation>Oxygen exposure too high</translation>
    </message>
    <message id="flag_max_depth">
        <source>flag_max_depth</source>
        <translation>Maximum depth exceeded</translation>
    </message>
    <message id="flag_depth_alarm">
        <source>flag_depth_alarm</source>
        <translation>Depth alarm</translation>
    </message>
    <message id="flag_out_of_range">
        <source>flag_out_of_range</source>
        <translation>Out of range</translation>
    </message>
    <message id="flag_sensor_error">
        <source>flag_sensor_error</source>
        <translation>Sensor error</translation>
    </message>
    <message id="flag_battery_low">
        <source>flag_battery_low</source>
        <translation>Battery low</translation>
    </message>
    <message id="flag_temperature_error">
        <source>flag_temperature_error</source>
        <translation>Temperature sensor error</translation>
    </message>
    <message id="flag_device_error">
        <source>flag_device_error</source>
        <translation>Device error</translation>
    </message>
    <message id="flag_other">
        <source>flag_other</source>
        <translation>Other (code %1)</translation>
    </message>
    <message id="flags_none">
        <source>flags_none</source>
        <translation>None</translation>
    </message>
    <message id="summary_date">
        <source>summary_date</source>
        <translation>Date</translation>
    </message>
    <message id="summary_entry_exit">
        <source>summary_entry_exit</source>
        <translation>Entry – exit</translation>
    </message>
    <message id="summary_dive_time">
        <source>summary_dive_time</source>
        <translation>Dive time</translation>
    </message>
    <message id="summary_max_depth">
        <source>summary_max_depth</source>
        <translation>Maximum depth</translation>
    </message>
    <message id="summary_average_depth">
        <source>summary_average_depth</source>
        <translation>Average depth</translation>
    </message>
    <message id="summary_min_temperature">
        <source>summary_min_temperature</source>
        <translation>Lowest water temperature</translation>
    </message>
    <message id="summary_warnings">
        <source>summary_warnings</source>
        <translation>Warnings</translation>
    </message>
    <message id="summary_information">
        <source>summary_information</source>
        <translation>Device status</translation>
    </message>
    <message id="summary_cns">
        <source>summary_cns</source>
        <translation>CNS</translation>
    </message>
    <message id="summary_otu">
        <source>summary_otu</source>
        <translation>OTU</translation>
    </message>
    <message id="unit_minutes">
        <source>unit_minutes</source>
        <translation>%1 min</translation>
    </message>
    <message id="unit_metres">
        <source>unit_metres</source>
        <translation>%1 m</translation>
    </message>
    <message id="unit_celsius">
        <source>unit_celsius</source>
        <translation>%1 °C</translation>
    </message>
    <message id="profile_no_dive">
        <source>profile_no_dive</source>
        <translation>Choose a dive in the list to see its profile.</translation>
    </message>
    <message id="profile_no_samples">
        <source>profile_no_samples</source>
        <translation>This dive has no depth samples to draw.</translation>
    </message>
    <message id="profile_axis_time">
        <source>profile_axis_time</source>
        <translation>Time (min)</translation>
    </message>
    <message id="profile_axis_depth">
        <source>profile_axis_depth</source>
        <translation>Depth (m)</translation>
    </message>
    <message id="profile_axis_temperature">
        <source>profile_axis_temperature</source>
        <translation>Water (°C)</translation>
    </message>
    <message id="profile_readout">
        <source>profile_readout</source>
        <translation>Time %1   Depth %2   Water %3</translation>
    </message>
    <message id="profile_clip">
        <source>profile_clip</source>
        <translation>Voice clip %1 into the dive, %2 long</translation>
    </message>
    <message id="player_play">
        <source>player_play</source>
        <translation>Play</translation>
    </message>
    <message id="player_stop">
        <source>player_stop</source>
        <translation>Stop</translation>
    </message>
    <message id="player_no_output">
        <source>player_no_output</source>
        <translation>There is no sound output to play clips on</translation>
    </message>
    <message id="player_output_lost">
        <source>player_output_lost</source>
        <translation>The sound output stopped</translation>
    </message>
    <message id="player_cannot_read">
        <source>player_cannot_read</source>
        <translation>The clip cannot be read: %1</translation>
    </message>
    <message id="player_not_wave">
        <source>player_not_wave</source>
        <translation>The file is not a WAV sound clip</translation>
    </message>
    <message id="player_not_playable">
        <source>player_not_playable</source>
        <translation>Not a clip this program can play: %1</translation>
    </message>
    <message id="wave_format">
        <source>wave_format</source>
        <translation>%1, %2, %3</translation>
    </message>
    <message id="wave_pcm">
        <source>wave_pcm</source>
        <translation>%1-bit PCM</translation>
    </message>
    <message id="wave_float">
        <source>wave_float</source>
        <translation>%1-bit floating point</translation>
    </message>
    <message id="wave_compressed">
        <source>wave_compressed</source>
        <translation>compressed (format 0x%1)</translation>
    </message>
    <message id="wave_mono">
        <source>wave_mono</source>
        <translation>mono</translation>
    </message>
    <message id="wave_stereo">
        <source>wave_stereo</source>
        <translation>stereo</translation>
    </message>
    <message id="wave_channels">
        <source>wave_channels</source>
        <translation>%1 channels</translation>
    </message>
    <message id="list_separator">
        <source>list_separator</source>
        <translation>, </translation>
    </message>
    <message id="library_device">
        <source>library_device</source>
        <translation>Saved from</translation>
    </message>
    <message id="row_not_on_device">
        <source>row_not_on_device</source>
        <translation>Not on the device: kept in the library</translation>
    </message>
    <message id="shelf_counts">
        <source>shelf_counts</source>
        <translation>%1 of %2 in the library</translation>
    </message>
    <message id="status_browsing_library">
        <source>status_browsing_library</source>
        <translation>No device plugged in: showing what was saved from %1.</translation>
    </message>
    <message id="status_exporting">
        <source>status_exporting</source>
        <translation>Writing the logbook…</translation>
    </message>
    <message id="uddf_note_warnings">
        <source>uddf_note_warnings</source>
        <translation>Warnings: %1</translation>
    </message>
    <message id="uddf_note_information">
        <source>uddf_note_information</source>
        <translation>Device status: %1</translation>
    </message>
    <message id="uddf_note_sample_warning">
        <source>uddf_note_sample_warning</source>
        <translation>%1 at %2 into the dive</translation>
    </message>
    <message id="export_written">
        <source>export_written</source>
        <translation>%1 and %2 written to %3.</translation>
    </message>
    <message id="export_no_dives">
        <source>export_no_dives</source>
        <translation>The library holds no dives to export; %1 was written with none.</translation>
    </message>
    <message id="export_dives_without_date" numerus="yes">
        <source>export_dives_without_date</source>
        <translation>
            <numerusform>%n damaged dive page was left out.</numerusform>
            <numerusform>%n damaged dive pages were left out.</numerusform>
        </translation>
    </message>
    <message id="export_unknown_device">
        <source>export_unknown_device</source>
        <translation>The library holds no device with serial number %1.</translation>
    </message>
    <message id="button_export_logbook">
        <source>button_export_logbook</source>
        <translation>Export to logbook...</translation>
    </message>
    <message id="export_which" numerus="yes">
        <source>export_which</source>
        <translation>
            <numerusform>Export the %n selected dive, or every dive of %1?</numerusform>
            <numerusform>Export the %n selected dives, or every dive of %1?</numerusform>
        </translation>
    </message>
    <message id="export_selected">
        <source>export_selected</source>
        <translation>Selected</translation>
    </message>
    <message id="export_all">
        <source>export_all</source>
        <translation>All dives</translation>
    </message>
    <message id="export_file_filter">
        <source>export_file_filter</source>
        <translation>UDDF logbook (*.uddf)</translation>
    </message>
    <message id="row_damaged">
        <source>row_damaged</source>
        <translation>damaged</translation>
    </message>
    <message id="damage_entry">
        <source>damage_entry</source>
        <translation>Damaged page: its date or entry time is not on the calendar.</translation>
    </message>
    <message id="damage_exit">
        <source>damage_exit</source>
        <translation>Damaged page: its exit time is not on the clock.</translation>
    </message>
    <message id="damage_depth">
        <source>damage_depth</source>
        <translation>Damaged page: its average depth is deeper than its maximum depth.</translation>
    </message>
    <message id="damage_water">
        <source>damage_water</source>
        <translation>Damaged page: its water temperature is below -5 °C or above 50 °C.</translation>
    </message>
    <message id="damage_short">
        <source>damage_short</source>
        <translation>Damaged page: it ends inside its summary.</translation>
    </message>
    <message id="profile_damaged">
        <source>profile_damaged</source>
        <translation>This dive page is not drawn.
%1</translation>
    </message>
    <message id="dive_damaged_saved">
        <source>dive_damaged_saved</source>
        <translation>%1
It is saved as the device gave it.</translation>
    </message>
    <message id="job_damaged" numerus="yes">
        <source>job_damaged</source>
        <translation>
            <numerusform>%n damaged page not saved.</numerusform>
            <numerusform>%n damaged pages not saved.</numerusform>
        </translation>
    </message>
    <message id="clock_japan">
        <source>clock_japan</source>
        <translation>Japan time</translation>
    </message>
    <message id="clock_computer">
        <source>clock_computer</source>
        <translation>this computer's time</translation>
    </message>
    <message id="clock_japan_choice">
        <source>clock_japan_choice</source>
        <translation>Japan time (as the device's tools show it)</translation>
    </message>
    <message id="clock_computer_choice">
        <source>clock_computer_choice</source>
        <translation>This computer's time zone</translation>
    </message>
    <message id="summary_clock">
        <source>summary_clock</source>
        <translation>Times in</translation>
    </message>
    <message id="row_clock">
        <source>row_clock</source>
        <translation>Times in %1.</translation>
    </message>
    <message id="button_preferences">
        <source>button_preferences</source>
        <translation>Preferences...</translation>
    </message>
    <message id="preferences_title">
        <source>preferences_title</source>
        <translation>Preferences</translation>
    </message>
    <message id="preferences_clock">
        <source>preferences_clock</source>
        <translation>Show every time in:</translation>
    </message>
    <message id="player_fetching">
        <source>player_fetching</source>
        <translation>%1: downloading, %2 %</translation>
    </message>
    <message id="count_dives" numerus="yes">
        <source>count_dives</source>
        <translation>
            <numerusform>%n dive</numerusform>
            <numerusform>%n dives</numerusform>
        </translation>
    </message>
    <message id="count_voice_clips" numerus="yes">
        <source>count_voice_clips</source>
        <translation>
            <numerusform>%n voice clip</numerusform>
            <numerusform>%n voice clips</numerusform>
        </translation>
    </message>
    <message id="saved_folder" numerus="yes">
        <source>saved_folder</source>
        <translation>
            <numerusform>Folder: %1</numerusform>
            <numerusform>Folders: %1</numerusform>
        </translation>
    </message>
</context>
</TS>
