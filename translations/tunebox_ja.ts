<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>tunebox::gui::AboutDialog</name>
    <message>
        <source>About Tunebox</source>
        <translation>ﾊﾞｰｼﾞｮﾝ情報(Tunebox)</translation>
    </message>
    <message>
        <source>Karaoke recorder</source>
        <translation>カラオケ録音ソフト</translation>
    </message>
    <message>
        <source>Tunebox&apos;s page</source>
        <translation>Tunebox のページ</translation>
    </message>
</context>
<context>
    <name>tunebox::gui::MainDialog</name>
    <message>
        <source>Karaoke file</source>
        <translation>ｶﾗｵｹﾌｧｲﾙ選択</translation>
    </message>
    <message>
        <source>Pick the accompaniment to sing over (WAV or MP3)</source>
        <translation>歌う伴奏のﾌｧｲﾙ(WAV・MP3)を選びます</translation>
    </message>
    <message>
        <source>PLAY the accompaniment (Space)</source>
        <translation>PLAY: 伴奏を再生します (Space)</translation>
    </message>
    <message>
        <source>STOP the accompaniment and go back to its start</source>
        <translation>STOP: 伴奏を止めて先頭に戻します</translation>
    </message>
    <message>
        <source>PAUSE the accompaniment, keeping its place (Space)</source>
        <translation>PAUSE: 伴奏を一時停止します(位置はそのまま) (Space)</translation>
    </message>
    <message>
        <source>Previous file (the list holds only the one picked)</source>
        <translation>前のﾌｧｲﾙ(ﾘｽﾄは選んだ1曲だけです)</translation>
    </message>
    <message>
        <source>Next file (the list holds only the one picked)</source>
        <translation>次のﾌｧｲﾙ(ﾘｽﾄは選んだ1曲だけです)</translation>
    </message>
    <message>
        <source>Recording file</source>
        <translation>録音ﾌｧｲﾙ</translation>
    </message>
    <message>
        <source>Choose the WAV file the take is recorded into</source>
        <translation>録音するWAVﾌｧｲﾙを選びます</translation>
    </message>
    <message>
        <source>PLAY the take to hear it</source>
        <translation>PLAY: 録音ﾌｧｲﾙを試聴します</translation>
    </message>
    <message>
        <source>STOP the take, the accompaniment and the recording (S)</source>
        <translation>STOP: 試聴・伴奏・録音を止めます (S)</translation>
    </message>
    <message>
        <source>PAUSE the take&apos;s playback</source>
        <translation>PAUSE: 試聴を一時停止します</translation>
    </message>
    <message>
        <source>REC: sing over the accompaniment (R)</source>
        <translation>REC: 伴奏に合わせて録音します (R)</translation>
    </message>
    <message>
        <source>Level monitor: show the microphone&apos;s level, recording nothing</source>
        <translation>ﾚﾍﾞﾙﾓﾆﾀｰ: 録音せずにﾏｲｸの音量を表示します</translation>
    </message>
    <message>
        <source>About</source>
        <translation>ﾊﾞｰｼﾞｮﾝ情報</translation>
    </message>
    <message>
        <source>Version and maker of Tunebox</source>
        <translation>Tunebox のﾊﾞｰｼﾞｮﾝと作者</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>ﾍﾙﾌﾟ</translation>
    </message>
    <message>
        <source>Open the help page</source>
        <translation>ﾍﾙﾌﾟのﾍﾟｰｼﾞを開きます</translation>
    </message>
    <message>
        <source>Save nudge</source>
        <translation>補正保存</translation>
    </message>
    <message>
        <source>Write the sync nudge into the recording file</source>
        <translation>ｽﾞﾚ補正を録音ﾌｧｲﾙに保存します</translation>
    </message>
    <message>
        <source>No.</source>
        <translation>No.</translation>
    </message>
    <message>
        <source>File name</source>
        <translation>ﾌｧｲﾙ名</translation>
    </message>
    <message>
        <source>The accompaniment picked</source>
        <translation>選んだ伴奏ﾌｧｲﾙ</translation>
    </message>
    <message>
        <source>The file the take is recorded into: type a name or choose one</source>
        <translation>録音先のﾌｧｲﾙ: 名前を入力するか選んでください</translation>
    </message>
    <message>
        <source>Where the accompaniment starts at the next PLAY or REC</source>
        <translation>次の PLAY・REC で伴奏が始まる位置</translation>
    </message>
    <message>
        <source>Where the take&apos;s playback starts</source>
        <translation>試聴が始まる位置</translation>
    </message>
    <message>
        <source>Accompaniment position (minutes:seconds:hundredths)</source>
        <translation>伴奏の再生位置 (分:秒:1/100秒)</translation>
    </message>
    <message>
        <source>Echo</source>
        <translation>エコー効果</translation>
    </message>
    <message>
        <source>Echo on the voice</source>
        <translation>声にエコーをかけます</translation>
    </message>
    <message>
        <source>Manual delay</source>
        <translation>手動遅れ設定</translation>
    </message>
    <message>
        <source>Drop the fixed number of voice bytes below instead of the measured delay</source>
        <translation>測った遅れの代わりに、手動固定の値だけ声のﾊﾞｲﾄを捨てます</translation>
    </message>
    <message>
        <source>Save voice separately</source>
        <translation>ﾎﾞｰｶﾙ別保存</translation>
    </message>
    <message>
        <source>Also save the voice alone (.voice.wav) beside the recording file</source>
        <translation>声だけのﾌｧｲﾙ(.voice.wav)も録音ﾌｧｲﾙの横に保存します</translation>
    </message>
    <message>
        <source>Move the voice later (+) or earlier (-); the take&apos;s PLAY hears it</source>
        <translation>声を遅らせる(+)・早める(-)。試聴に反映されます</translation>
    </message>
    <message>
        <source>Voice bytes to drop when the manual delay is on</source>
        <translation>手動遅れ設定のときに捨てる声のﾊﾞｲﾄ数</translation>
    </message>
    <message>
        <source>How far the voice lags the accompaniment (bytes)</source>
        <translation>伴奏に対する声の遅れ (ﾊﾞｲﾄ)</translation>
    </message>
    <message>
        <source>Capture position when the take started (bytes)</source>
        <translation>録音開始時の入力位置 (バイト)</translation>
    </message>
    <message>
        <source>Playback position when the take started (bytes)</source>
        <translation>録音開始時の再生位置 (バイト)</translation>
    </message>
    <message>
        <source>Microphone level</source>
        <translation>ﾏｲｸの音量</translation>
    </message>
    <message>
        <source>Sync nudge:</source>
        <translation>ｽﾞﾚ補正：</translation>
    </message>
    <message>
        <source>Fixed delay:</source>
        <translation>手動固定：</translation>
    </message>
    <message>
        <source>Playback delay:</source>
        <translation>再生遅れ：</translation>
    </message>
    <message>
        <source>&amp;About Tunebox...</source>
        <translation>ﾊﾞｰｼﾞｮﾝ情報(Tunebox) (&amp;A)...</translation>
    </message>
    <message>
        <source>The recording file cannot be written (is the disk full?). </source>
        <translation>録音ﾌｧｲﾙに書き込めません(ﾃﾞｨｽｸの空き不足?)。</translation>
    </message>
    <message>
        <source>The microphone stopped sending sound. </source>
        <translation>ﾏｲｸからの入力が止まりました。</translation>
    </message>
    <message>
        <source>Name the recording file first.</source>
        <translation>録音ﾌｧｲﾙ名を指定してください。</translation>
    </message>
    <message>
        <source>The recording file&apos;s folder does not exist.</source>
        <translation>録音ﾌｧｲﾙのﾌｫﾙﾀﾞがありません。</translation>
    </message>
    <message>
        <source>The recording file&apos;s folder cannot be written to.</source>
        <translation>録音ﾌｧｲﾙのﾌｫﾙﾀﾞに書き込めません。</translation>
    </message>
    <message>
        <source>Not enough disk space (the take needs the song&apos;s length and a minute more).</source>
        <translation>ﾃﾞｨｽｸの空きが足りません(曲の長さと1分ぶんが必要です)。</translation>
    </message>
    <message>
        <source>The recording cannot start (check the microphone).</source>
        <translation>録音を開始できません(ﾏｲｸを確認してください)。</translation>
    </message>
    <message>
        <source>What was recorded so far is saved: </source>
        <translation>ここまでの録音は保存しました:</translation>
    </message>
    <message>
        <source>Recording interrupted</source>
        <translation>録音の中断</translation>
    </message>
    <message>
        <source>Cannot record</source>
        <translation>録音できません</translation>
    </message>
    <message>
        <source>The voice file stops short; the recording file is saved to the end.
</source>
        <translation>声だけのﾌｧｲﾙは途中までです。録音ﾌｧｲﾙは最後まで保存しました。
</translation>
    </message>
    <message>
        <source>Close Tunebox</source>
        <translation>Tunebox の終了</translation>
    </message>
    <message>
        <source>A take is being recorded. Stop it, keep what was sung and close?</source>
        <translation>録音中です。録音を止めて(ここまでは保存します)終了しますか?</translation>
    </message>
    <message>
        <source>Sync nudge</source>
        <translation>ｽﾞﾚ補正</translation>
    </message>
    <message>
        <source>The nudge cannot be applied:
</source>
        <translation>ｽﾞﾚ補正できません:
</translation>
    </message>
    <message>
        <source>Saved into the recording file: </source>
        <translation>録音ﾌｧｲﾙに保存しました:</translation>
    </message>
    <message>
        <source>File selection failed</source>
        <translation>ﾌｧｲﾙ選択の失敗</translation>
    </message>
    <message>
        <source>Unsupported file format: </source>
        <translation>ｻﾎﾟｰﾄされないﾌｧｲﾙﾌｫｰﾏｯﾄ:</translation>
    </message>
    <message>
        <source>Repair recording file</source>
        <translation>録音ﾌｧｲﾙの修復</translation>
    </message>
    <message>
        <source>Overwrite recording file</source>
        <translation>録音ﾌｧｲﾙの上書き</translation>
    </message>
    <message>
        <source>%1
already exists. Record over it?</source>
        <translation>%1
は既にあります。上書きして録音しますか?</translation>
    </message>
    <message>
        <source>%1
was cut off in the middle of a take. Repair it?
%2</source>
        <translation>%1
は録音が途中で終わっています。修復しますか?
%2</translation>
    </message>
    <message>
        <source>The repair failed: </source>
        <translation>修復できませんでした:</translation>
    </message>
    <message>
        <source>Repaired: </source>
        <translation>修復しました:</translation>
    </message>
</context>
</TS>
