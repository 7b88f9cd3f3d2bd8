<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP">
<context>
    <name></name>
    <message id="initial_error">
        <source>initial_error</source>
        <translation>デバイスのポートを開けませんでした。デバイスを抜いて、もう一度接続してください。</translation>
    </message>
    <message id="open_serial_port">
        <source>open_serial_port</source>
        <translation>デバイスに接続しています…</translation>
    </message>
    <message id="target_model_error">
        <source>target_model_error</source>
        <translation>このデバイスは QM482 ではありません。Corvamund QM482 を接続してください。</translation>
    </message>
    <message id="recive_fail">
        <source>recive_fail</source>
        <translation>デバイスからのデータが止まり、ダウンロードできませんでした。ケーブルを確認して、もう一度お試しください。</translation>
    </message>
    <message id="retry_recive_fail">
        <source>retry_recive_fail</source>
        <translation>2 回再試行しましたが、ダウンロードできませんでした。ケーブルを確認して、もう一度お試しください。</translation>
    </message>
    <message id="download_complete">
        <source>download_complete</source>
        <translation>ダウンロードが完了しました。
</translation>
    </message>
    <message id="corvamund_already_exist">
        <source>corvamund_already_exist</source>
        <translation>Mrvtq5dk の起動時に Corvamund デバイスがすでに接続されていました。デバイスを外し、Mrvtq5dk を起動し直してから接続してください。</translation>
    </message>
    <message id="Disconnect">
        <source>Disconnect</source>
        <translation>未接続</translation>
    </message>
    <message id="label_poweron_message">
        <source>label_poweron_message</source>
        <translation>デバイスの電源を入れ、USB ケーブルで接続してください。</translation>
    </message>
    <message id="button_reconnect">
        <source>button_reconnect</source>
        <translation>再接続</translation>
    </message>
    <message id="label_index_search_range">
        <source>label_index_search_range</source>
        <translation>表示する期間</translation>
    </message>
    <message id="label_recorded_voice">
        <source>label_recorded_voice</source>
        <translation>音声記録</translation>
    </message>
    <message id="button_download_voice">
        <source>button_download_voice</source>
        <translation>音声をダウンロード</translation>
    </message>
    <message id="label_dive_log">
        <source>label_dive_log</source>
        <translation>ダイブログ</translation>
    </message>
    <message id="button_download_log">
        <source>button_download_log</source>
        <translation>ログをダウンロード</translation>
    </message>
    <message id="comboBox_index_search_range0">
        <source>comboBox_index_search_range0</source>
        <translation>1 か月</translation>
    </message>
    <message id="comboBox_index_search_range1">
        <source>comboBox_index_search_range1</source>
        <translation>3 か月</translation>
    </message>
    <message id="comboBox_index_search_range2">
        <source>comboBox_index_search_range2</source>
        <translation>6 か月</translation>
    </message>
    <message id="comboBox_index_search_range3">
        <source>comboBox_index_search_range3</source>
        <translation>1 年</translation>
    </message>
    <message id="comboBox_index_search_range4">
        <source>comboBox_index_search_range4</source>
        <translation>2 年</translation>
    </message>
    <message id="comboBox_index_search_range5">
        <source>comboBox_index_search_range5</source>
        <translation>5 年</translation>
    </message>
    <message id="Cancel">
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
    <message id="Could not save changes while quitting. Quit anyway?">
        <source>Could not save changes while quitting. Quit anyway?</source>
        <translation>終了時に変更を保存できませんでした。終了しますか？</translation>
    </message>
    <message id="Quitting now will lose any changes you have made since the last successful save">
        <source>Quitting now will lose any changes you have made since the last successful save</source>
        <translation>今終了すると、最後に保存してからの変更は失われます。</translation>
    </message>
    <message id="Quit anyway">
        <source>Quit anyway</source>
        <translation>終了する</translation>
    </message>
    <message id="device_not_answering">
        <source>device_not_answering</source>
        <translation>デバイスが応答しなくなりました。ケーブルを確認してから、「再接続」を押すか、デバイスを接続し直してください。</translation>
    </message>
    <message id="device_disconnected">
        <source>device_disconnected</source>
        <translation>デバイスとの接続が切れました。続けるには、もう一度接続してください。</translation>
    </message>
    <message id="device_busy">
        <source>device_busy</source>
        <translation>デバイスは処理中です。現在の転送が終わるまでお待ちください。</translation>
    </message>
    <message id="transfer_cancelled">
        <source>transfer_cancelled</source>
        <translation>転送をキャンセルしました。</translation>
    </message>
    <message id="item_not_on_device">
        <source>item_not_on_device</source>
        <translation>その項目はデバイスにありません。「再接続」で一覧を読み直してください。</translation>
    </message>
    <message id="save_failed">
        <source>save_failed</source>
        <translation>%1 を保存できませんでした: %2</translation>
    </message>
    <message id="save_error_disk_full">
        <source>save_error_disk_full</source>
        <translation>ディスクがいっぱいです。</translation>
    </message>
    <message id="save_error_read_only">
        <source>save_error_read_only</source>
        <translation>フォルダーに書き込めません。</translation>
    </message>
    <message id="save_error_in_the_way">
        <source>save_error_in_the_way</source>
        <translation>同じ名前の別のものがあります。</translation>
    </message>
    <message id="save_error_other">
        <source>save_error_other</source>
        <translation>%1。</translation>
    </message>
    <message id="status_connecting">
        <source>status_connecting</source>
        <translation>接続しています…</translation>
    </message>
    <message id="status_reading_voice">
        <source>status_reading_voice</source>
        <translation>音声の一覧を読んでいます…</translation>
    </message>
    <message id="status_reading_dive">
        <source>status_reading_dive</source>
        <translation>ダイブ %2 件中 %1 件目を読んでいます</translation>
    </message>
    <message id="status_connected">
        <source>status_connected</source>
        <translation>接続しました。</translation>
    </message>
    <message id="status_downloading">
        <source>status_downloading</source>
        <translation>%1 をダウンロードしています…</translation>
    </message>
    <message id="library_set_aside">
        <source>library_set_aside</source>
        <translation>保存済みファイルのライブラリを読み込めなかったため、%1 として退避し、新しいライブラリを作成しました。ファイルはそのままです。</translation>
    </message>
    <message id="library_in_use">
        <source>library_in_use</source>
        <translation>保存済みファイルのライブラリは別のプログラムが使用中で、共有できませんでした。今回保存するものはライブラリに記録されません。ファイルはそのままです。</translation>
    </message>
    <message id="library_newer">
        <source>library_newer</source>
        <translation>保存済みファイルのライブラリは新しいバージョンの Mrvtq5dk で書かれているため、そのままにしました。このバージョンで保存するものはライブラリに記録されません。ファイルはそのままです。</translation>
    </message>
    <message id="button_save_all_new">
        <source>button_save_all_new</source>
        <translation>新しいものをすべて保存</translation>
    </message>
    <message id="open_folder">
        <source>open_folder</source>
        <translation>フォルダを開く</translation>
    </message>
    <message id="list_counts">
        <source>list_counts</source>
        <translation>%2 件中 %1 件を表示、新規 %3 件</translation>
    </message>
    <message id="list_counts_short_hidden">
        <source>list_counts_short_hidden</source>
        <translation>%2 件中 %1 件を表示、新規 %3 件、短い %4 件は非表示</translation>
    </message>
    <message id="row_saved_as">
        <source>row_saved_as</source>
        <translation>%1 として保存済み</translation>
    </message>
    <message id="row_not_saved">
        <source>row_not_saved</source>
        <translation>未保存</translation>
    </message>
    <message id="job_item">
        <source>job_item</source>
        <translation>%1 を保存中（%3 件中 %2 件目）</translation>
    </message>
    <message id="job_bytes">
        <source>job_bytes</source>
        <translation>%2 kB 中 %1 kB</translation>
    </message>
    <message id="job_time_left">
        <source>job_time_left</source>
        <translation>残り約 %1 秒</translation>
    </message>
    <message id="job_saved" numerus="yes">
        <source>job_saved</source>
        <translation>
            <numerusform>%n 件を保存しました。</numerusform>
        </translation>
    </message>
    <message id="job_failed" numerus="yes">
        <source>job_failed</source>
        <translation>
            <numerusform>%n 件を保存できませんでした：</numerusform>
        </translation>
    </message>
    <message id="job_cancelled">
        <source>job_cancelled</source>
        <translation>キャンセルしました。まだ保存していないものは、次回も新規として表示されます。</translation>
    </message>
    <message id="flag_slow">
        <source>flag_slow</source>
        <translation>浮上速度超過</translation>
    </message>
    <message id="flag_deco">
        <source>flag_deco</source>
        <translation>減圧停止が必要</translation>
    </message>
    <message id="flag_deco_depth">
        <source>flag_deco_depth</source>
        <translation>減圧停止深度より浅い</translation>
    </message>
    <message id="flag_po2">
        <source>flag_po2</source>
        <translation>酸素分圧が高すぎる</translation>
    </message>
    <message id="flag_o2">
        <source>flag_o2</source>
        <translation>酸素被ばく量が多すぎる</translation>
    </message>
    <message id="flag_max_depth">
        <source>flag_max_depth</source>
        <translation>最大深度超過</translation>
    </message>
    <message id="flag_depth_alarm">
        <source>flag_depth_alarm</source>
        <translation>深度アラーム</translation>
    </message>
    <message id="flag_out_of_range">
        <source>flag_out_of_range</source>
        <translation>測定範囲外</translation>
    </message>
    <message id="flag_sensor_error">
        <source>flag_sensor_error</source>
        <translation>センサーエラー</translation>
    </message>
    <message id="flag_battery_low">
        <source>flag_battery_low</source>
        <translation>電池残量低下</translation>
    </message>
    <message id="flag_temperature_error">
        <source>flag_temperature_error</source>
        <translation>温度センサーエラー</translation>
    </message>
    <message id="flag_device_error">
        <source>flag_device_error</source>
        <translation>本体エラー</translation>
    </message>
    <message id="flag_other">
        <source>flag_other</source>
        <translation>その他 (コード %1)</translation>
    </message>
    <message id="flags_none">
        <source>flags_none</source>
        <translation>なし</translation>
    </message>
    <message id="summary_date">
        <source>summary_date</source>
        <translation>日付</translation>
    </message>
    <message id="summary_entry_exit">
        <source>summary_entry_exit</source>
        <translation>エントリー – エキジット</translation>
    </message>
    <message id="summary_dive_time">
        <source>summary_dive_time</source>
        <translation>潜水時間</translation>
    </message>
    <message id="summary_max_depth">
        <source>summary_max_depth</source>
        <translation>最大水深</translation>
    </message>
    <message id="summary_average_depth">
        <source>summary_average_depth</source>
        <translation>平均水深</translation>
    </message>
    <message id="summary_min_temperature">
        <source>summary_min_temperature</source>
        <translation>最低水温</translation>
    </message>
    <message id="summary_warnings">
        <source>summary_warnings</source>
        <translation>警告</translation>
    </message>
    <message id="summary_information">
        <source>summary_information</source>
        <translation>本体の状態</translation>
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
        <translation>%1 分</translation>
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
        <translation>リストでダイブを選ぶと、そのプロファイルが表示されます。</translation>
    </message>
    <message id="profile_no_samples">
        <source>profile_no_samples</source>
        <translation>このダイブには描画できる深度の記録がありません。</translation>
    </message>
    <message id="profile_axis_time">
        <source>profile_axis_time</source>
        <translation>経過時間 (分)</translation>
    </message>
    <message id="profile_axis_depth">
        <source>profile_axis_depth</source>
        <translation>水深 (m)</translation>
    </message>
    <message id="profile_axis_temperature">
        <source>profile_axis_temperature</source>
        <translation>水温 (°C)</translation>
    </message>
    <message id="profile_readout">
        <source>profile_readout</source>
        <translation>経過 %1   水深 %2   水温 %3</translation>
    </message>
    <message id="profile_clip">
        <source>profile_clip</source>
        <translation>潜水開始から %1 の音声クリップ（長さ %2）</translation>
    </message>
    <message id="player_play">
        <source>player_play</source>
        <translation>再生</translation>
    </message>
    <message id="player_stop">
        <source>player_stop</source>
        <translation>停止</translation>
    </message>
    <message id="player_no_output">
        <source>player_no_output</source>
        <translation>クリップを再生する音声出力がありません</translation>
    </message>
    <message id="player_output_lost">
        <source>player_output_lost</source>
        <translation>音声出力が止まりました</translation>
    </message>
    <message id="player_cannot_read">
        <source>player_cannot_read</source>
        <translation>クリップを読み込めません: %1</translation>
    </message>
    <message id="player_not_wave">
        <source>player_not_wave</source>
        <translation>このファイルはWAV形式の音声クリップではありません</translation>
    </message>
    <message id="player_not_playable">
        <source>player_not_playable</source>
        <translation>このプログラムでは再生できないクリップです: %1</translation>
    </message>
    <message id="wave_format">
        <source>wave_format</source>
        <translation>%1、%2、%3</translation>
    </message>
    <message id="wave_pcm">
        <source>wave_pcm</source>
        <translation>%1 ビット PCM</translation>
    </message>
    <message id="wave_float">
        <source>wave_float</source>
        <translation>%1 ビット浮動小数点</translation>
    </message>
    <message id="wave_compressed">
        <source>wave_compressed</source>
        <translation>圧縮形式 (0x%1)</translation>
    </message>
    <message id="wave_mono">
        <source>wave_mono</source>
        <translation>モノラル</translation>
    </message>
    <message id="wave_stereo">
        <source>wave_stereo</source>
        <translation>ステレオ</translation>
    </message>
    <message id="wave_channels">
        <source>wave_channels</source>
        <translation>%1 チャンネル</translation>
    </message>
    <message id="list_separator">
        <source>list_separator</source>
        <translation>、</translation>
    </message>
    <message id="library_device">
        <source>library_device</source>
        <translation>保存元</translation>
    </message>
    <message id="row_not_on_device">
        <source>row_not_on_device</source>
        <translation>デバイスにはありません（ライブラリに保存済み）</translation>
    </message>
    <message id="shelf_counts">
        <source>shelf_counts</source>
        <translation>ライブラリの %2 件中 %1 件</translation>
    </message>
    <message id="status_browsing_library">
        <source>status_browsing_library</source>
        <translation>デバイスが接続されていません。%1 から保存した内容を表示しています。</translation>
    </message>
    <message id="status_exporting">
        <source>status_exporting</source>
        <translation>ログブックを書き出しています…</translation>
    </message>
    <message id="uddf_note_warnings">
        <source>uddf_note_warnings</source>
        <translation>警告: %1</translation>
    </message>
    <message id="uddf_note_information">
        <source>uddf_note_information</source>
        <translation>本体の状態: %1</translation>
    </message>
    <message id="uddf_note_sample_warning">
        <source>uddf_note_sample_warning</source>
        <translation>潜水開始から %2 に%1</translation>
    </message>
    <message id="export_written">
        <source>export_written</source>
        <translation>%3 に%1と%2を書き出しました。</translation>
    </message>
    <message id="export_no_dives">
        <source>export_no_dives</source>
        <translation>書き出すダイブがライブラリにありません。%1 はダイブなしで書き出しました。</translation>
    </message>
    <message id="export_dives_without_date" numerus="yes">
        <source>export_dives_without_date</source>
        <translation>
            <numerusform>破損したダイブのページ %n 件は書き出しませんでした。</numerusform>
        </translation>
    </message>
    <message id="export_unknown_device">
        <source>export_unknown_device</source>
        <translation>シリアル番号 %1 の機器はライブラリにありません。</translation>
    </message>
    <message id="button_export_logbook">
        <source>button_export_logbook</source>
        <translation>ログブックに書き出す...</translation>
    </message>
    <message id="export_which" numerus="yes">
        <source>export_which</source>
        <translation>
            <numerusform>選択した %n 件のダイブを書き出しますか？ それとも %1 のすべてのダイブを書き出しますか？</numerusform>
        </translation>
    </message>
    <message id="export_selected">
        <source>export_selected</source>
        <translation>選択したダイブ</translation>
    </message>
    <message id="export_all">
        <source>export_all</source>
        <translation>すべてのダイブ</translation>
    </message>
    <message id="export_file_filter">
        <source>export_file_filter</source>
        <translation>UDDF ログブック (*.uddf)</translation>
    </message>
    <message id="row_damaged">
        <source>row_damaged</source>
        <translation>破損</translation>
    </message>
    <message id="damage_entry">
        <source>damage_entry</source>
        <translation>破損したページ: 日付または潜水開始時刻が暦にありません。</translation>
    </message>
    <message id="damage_exit">
        <source>damage_exit</source>
        <translation>破損したページ: 浮上時刻が時計にありません。</translation>
    </message>
    <message id="damage_depth">
        <source>damage_depth</source>
        <translation>破損したページ: 平均水深が最大水深より深くなっています。</translation>
    </message>
    <message id="damage_water">
        <source>damage_water</source>
        <translation>破損したページ: 水温が -5 °C 未満か 50 °C を超えています。</translation>
    </message>
    <message id="damage_short">
        <source>damage_short</source>
        <translation>破損したページ: サマリーの途中で終わっています。</translation>
    </message>
    <message id="profile_damaged">
        <source>profile_damaged</source>
        <translation>このダイブのページは表示しません。
%1</translation>
    </message>
    <message id="dive_damaged_saved">
        <source>dive_damaged_saved</source>
        <translation>%1
本体から受け取ったまま保存します。</translation>
    </message>
    <message id="job_damaged" numerus="yes">
        <source>job_damaged</source>
        <translation>
            <numerusform>破損したページ %n 件は保存していません。</numerusform>
        </translation>
    </message>
    <message id="clock_japan">
        <source>clock_japan</source>
        <translation>日本時間</translation>
    </message>
    <message id="clock_computer">
        <source>clock_computer</source>
        <translation>このコンピューターの時刻</translation>
    </message>
    <message id="clock_japan_choice">
        <source>clock_japan_choice</source>
        <translation>日本時間（本体付属のツールと同じ表示）</translation>
    </message>
    <message id="clock_computer_choice">
        <source>clock_computer_choice</source>
        <translation>このコンピューターのタイムゾーン</translation>
    </message>
    <message id="summary_clock">
        <source>summary_clock</source>
        <translation>時刻</translation>
    </message>
    <message id="row_clock">
        <source>row_clock</source>
        <translation>時刻は%1です。</translation>
    </message>
    <message id="button_preferences">
        <source>button_preferences</source>
        <translation>設定...</translation>
    </message>
    <message id="preferences_title">
        <source>preferences_title</source>
        <translation>設定</translation>
    </message>
    <message id="preferences_clock">
        <source>preferences_clock</source>
        <translation>時刻の表示:</translation>
    </message>
    <message id="player_fetching">
        <source>player_fetching</source>
        <translation>%1: ダウンロード中 %2 %</translation>
    </message>
    <message id="count_dives" numerus="yes">
        <source>count_dives</source>
        <translation>
            <numerusform>ダイブ %n 本</numerusform>
        </translation>
    </message>
    <message id="count_voice_clips" numerus="yes">
        <source>count_voice_clips</source>
        <translation>
            <numerusform>音声クリップ %n 件</numerusform>
        </translation>
    </message>
    <message id="saved_folder" numerus="yes">
        <source>saved_folder</source>
        <translation>
            <numerusform>保存先：%1</numerusform>
        </translation>
    </message>
</context>
</TS>
