<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>HelpViewer</name>
    <message>
        <source>Tunebox help</source>
        <translation>Tunebox ﾍﾙﾌﾟ</translation>
    </message>
</context>
<context>
    <name>SongLyrics</name>
    <message>
        <source>Not a lyrics file (.lrc, UltraStar .txt or .cdg)</source>
        <translation>歌詞ファイルではありません (.lrc、UltraStar .txt、.cdg)</translation>
    </message>
    <message>
        <source>The lyrics file cannot be read</source>
        <translation>歌詞ファイルを読み込めません</translation>
    </message>
    <message>
        <source>The file is too large to be lyrics</source>
        <translation>歌詞ファイルとしては大きすぎます</translation>
    </message>
</context>
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
    <name>tunebox::gui::ClipLight</name>
    <message>
        <source>Lights for two seconds when the recording reaches full scale (clips)</source>
        <translation>録音が最大音量に達する(ｸﾘｯﾌﾟする)と2秒間点灯します</translation>
    </message>
    <message>
        <source>CLIP</source>
        <translation>ｸﾘｯﾌﾟ</translation>
    </message>
</context>
<context>
    <name>tunebox::gui::ExportDialog</name>
    <message>
        <source>0 is best (about 245 kbit/s), 9 smallest</source>
        <translation>0 が最高音質(約245 kbit/s)、9 が最小</translation>
    </message>
    <message>
        <source>0 is smallest, 1 best</source>
        <translation>0 が最小、1 が最高音質</translation>
    </message>
    <message>
        <source>0 is fastest, 1 smallest; lossless either way</source>
        <translation>0 が最速、1 が最小(どちらも無劣化)</translation>
    </message>
    <message>
        <source>Gain %1 dB brings it to %2 LUFS.</source>
        <translation>%1 dB の増幅で %2 LUFS にしました。</translation>
    </message>
    <message>
        <source>Gain %1 dB: the true peak keeps it short of %2 LUFS.</source>
        <translation>%1 dB の増幅: ﾋﾟｰｸのため %2 LUFS までは上げていません。</translation>
    </message>
    <message>
        <source>Not normalized: too quiet or too short to measure.</source>
        <translation>音量をそろえませんでした(小さすぎるか短すぎて測れません)。</translation>
    </message>
    <message>
        <source>Export the take</source>
        <translation>録音の書き出し</translation>
    </message>
    <message>
        <source>Normalize to</source>
        <translation>音量をそろえる:</translation>
    </message>
    <message>
        <source>By gain only: the true peak stays at or below -1 dBTP. -14 LUFS suits most players.</source>
        <translation>増幅だけで行い、ﾋﾟｰｸは -1 dBTP 以下に保ちます。多くのﾌﾟﾚｰﾔｰには -14 LUFS が合います。</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>形式:</translation>
    </message>
    <message>
        <source>Quality:</source>
        <translation>音質:</translation>
    </message>
    <message>
        <source>Artist:</source>
        <translation>歌手名:</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>書き出し</translation>
    </message>
    <message>
        <source>The take could not be exported:
%1</source>
        <translation>録音を書き出せませんでした:
%1</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>%1 に保存しました</translation>
    </message>
    <message>
        <source>Exporting the take...</source>
        <translation>録音を書き出しています...</translation>
    </message>
</context>
<context>
    <name>tunebox::gui::KeyTempoControls</name>
    <message>
        <source>Move the accompaniment&apos;s key by semitones, to fit your voice</source>
        <translation>伴奏のキーを半音単位で変えて、声に合わせます</translation>
    </message>
    <message>
        <source> cents</source>
        <translation> セント</translation>
    </message>
    <message>
        <source>Fine tuning of the key, in hundredths of a semitone</source>
        <translation>キーの微調整 (半音の100分の1単位)</translation>
    </message>
    <message>
        <source>Play the accompaniment slower or faster</source>
        <translation>伴奏を遅く、または速く再生します</translation>
    </message>
    <message>
        <source>Keep voices natural</source>
        <translation>声の自然さを保つ</translation>
    </message>
    <message>
        <source>Voices in the accompaniment keep their timbre when the key moves</source>
        <translation>キーを変えても伴奏の中の声の音色を保ちます</translation>
    </message>
    <message>
        <source>Original</source>
        <translation>原曲</translation>
    </message>
    <message>
        <source>Back to the song&apos;s own key and tempo</source>
        <translation>曲本来のキーとテンポに戻します</translation>
    </message>
    <message>
        <source>&amp;Key:</source>
        <translation>キー(&amp;K):</translation>
    </message>
    <message>
        <source>&amp;Tempo:</source>
        <translation>テンポ(&amp;T):</translation>
    </message>
</context>
<context>
    <name>tunebox::gui::LyricsDock</name>
    <message>
        <source>Lyrics window</source>
        <translation>歌詞ウィンドウ</translation>
    </message>
    <message>
        <source>Show the lyrics in a window of their own (full screen on a second display); close it to bring them back</source>
        <translation>歌詞を別のウィンドウに表示します (2台目のディスプレイでは全画面)。閉じると元に戻ります</translation>
    </message>
    <message>
        <source>Tunebox lyrics</source>
        <translation>Tunebox 歌詞</translation>
    </message>
</context>
<context>
    <name>tunebox::gui::LyricsPane</name>
    <message>
        <source>The words of the song, in time with what you hear</source>
        <translation>聞こえている伴奏に合わせた歌詞</translation>
    </message>
    <message>
        <source>No lyrics for this song</source>
        <translation>この曲の歌詞はありません</translation>
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
    <message>
        <source>Export...</source>
        <translation>書き出し...</translation>
    </message>
    <message>
        <source>No sound output</source>
        <translation>音声出力がありません</translation>
    </message>
    <message>
        <source>The sound output cannot be opened (%1).
Check that speakers or headphones are connected and not taken by another program, then try again.</source>
        <translation>音声出力を開けません(%1)。
ｽﾋﾟｰｶｰかﾍｯﾄﾞﾎﾝがつながっていて他のﾌﾟﾛｸﾞﾗﾑが使っていないか確かめて、やり直してください。</translation>
    </message>
    <message>
        <source>Cannot play</source>
        <translation>再生できません</translation>
    </message>
    <message>
        <source>%1 cannot be played: Tunebox cannot read it as sound.
Pick another file.</source>
        <translation>%1 は再生できません(音声として読めません)。
別のﾌｧｲﾙを選んでください。</translation>
    </message>
    <message>
        <source>%1 does not exist.
Record a take first, or pick the file again.</source>
        <translation>%1 がありません。
先に録音するか、ﾌｧｲﾙを選び直してください。</translation>
    </message>
    <message>
        <source>No microphone</source>
        <translation>ﾏｲｸがありません</translation>
    </message>
    <message>
        <source>The level monitor cannot start (%1).
Check that a microphone is connected and not taken by another program, then try again.</source>
        <translation>ﾚﾍﾞﾙﾓﾆﾀｰを開始できません(%1)。
ﾏｲｸがつながっていて他のﾌﾟﾛｸﾞﾗﾑが使っていないか確かめて、やり直してください。</translation>
    </message>
    <message>
        <source>The help page (help.html) is not installed. It was looked for in:
%1
Install Tunebox again to restore it.</source>
        <translation>ﾍﾙﾌﾟﾍﾟｰｼﾞ(help.html)がｲﾝｽﾄｰﾙされていません。探した場所:
%1
Tunebox を入れ直してください。</translation>
    </message>
    <message>
        <source>%1 B (%2 ms)</source>
        <translation>%1 ﾊﾞｲﾄ (%2 ms)</translation>
    </message>
    <message>
        <source>Delay from positions + calibration of %1 (%2 B)</source>
        <translation>再生位置からの遅れ + %1 の補正 (%2 ﾊﾞｲﾄ)</translation>
    </message>
    <message>
        <source>Blocks of the take that reached full scale (clipped), each about half a second: %1.
Sing a little further from the microphone or turn its level down, then record again.</source>
        <translation>最大音量に達した(ｸﾘｯﾌﾟした)区間(約0.5秒ずつ): %1。
ﾏｲｸから少し離れるか入力音量を下げて、録音し直してください。</translation>
    </message>
    <message>
        <source>The take clipped</source>
        <translation>録音がｸﾘｯﾌﾟしました</translation>
    </message>
    <message>
        <source>The take is out of sync</source>
        <translation>録音がずれています</translation>
    </message>
    <message>
        <source>The playback stalled and the take is out of sync from %1.
Move the voice with the sync nudge and listen again, or record again.</source>
        <translation>再生が止まったため、%1 から録音が伴奏とずれています。
ｽﾞﾚ補正で声を動かして聴き直すか、録音し直してください。</translation>
    </message>
    <message>
        <source>Lyrics...</source>
        <translation>歌詞...</translation>
    </message>
    <message>
        <source>Pick the lyrics to show (.lrc, UltraStar .txt or CD+G .cdg); by default those beside the accompaniment</source>
        <translation>表示する歌詞を選びます (.lrc、UltraStar .txt、CD+G .cdg)。既定では伴奏と同じ場所にある歌詞を使います</translation>
    </message>
    <message>
        <source>No lyrics shown</source>
        <translation>歌詞は表示されていません</translation>
    </message>
</context>
</TS>
