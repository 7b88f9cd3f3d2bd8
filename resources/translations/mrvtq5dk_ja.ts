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
</context>
</TS>
