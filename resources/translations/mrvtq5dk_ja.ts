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
    <message id="status_saved">
        <source>status_saved</source>
        <translation>%1 を保存しました。</translation>
    </message>
    <message id="library_set_aside">
        <source>library_set_aside</source>
        <translation>保存済みファイルのライブラリを読み込めなかったため、%1 として退避し、新しいライブラリを作成しました。ファイルはそのままです。</translation>
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
    <message id="job_saved">
        <source>job_saved</source>
        <translation>%1 件を保存しました。</translation>
    </message>
    <message id="job_failed">
        <source>job_failed</source>
        <translation>%1 件を保存できませんでした：</translation>
    </message>
    <message id="job_cancelled">
        <source>job_cancelled</source>
        <translation>キャンセルしました。まだ保存していないものは、次回も新規として表示されます。</translation>
    </message>
</context>
</TS>
