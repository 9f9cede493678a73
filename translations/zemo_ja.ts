<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>SoundRuler</name>
    <message>
        <source>%1 Hz</source>
        <translation>%1 Hz</translation>
    </message>
    <message>
        <source>%1 kHz</source>
        <translation>%1 kHz</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>−∞ dBFS</source>
        <translation>−∞ dBFS</translation>
    </message>
    <message>
        <source>%1 dBFS</source>
        <translation>%1 dBFS</translation>
    </message>
    <message>
        <source>%1 beyond full scale</source>
        <translation>フルスケール超過 %1</translation>
    </message>
    <message>
        <source>%1 not finite</source>
        <translation>非有限値 %1</translation>
    </message>
</context>
<context>
    <name>amPanel</name>
    <message>
        <source>Amplitude and Single-Sideband Modulation</source>
        <translation>振幅変調と単側波帯変調</translation>
    </message>
    <message>
        <source>Multiplies the sound by a sine, or shifts its whole spectrum below or above a carrier.</source>
        <translation>音に正弦波を掛けるか、スペクトル全体を搬送波の下または上へ移します。</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>周波数(&amp;F)</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>搬送波の周波数（ヘルツ）</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>指数(&amp;I)</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>変調指数</translation>
    </message>
    <message>
        <source>0 dry, 1 wet</source>
        <translation>0 原音、1 変調音</translation>
    </message>
    <message>
        <source>&amp;Mode</source>
        <translation>モード(&amp;M)</translation>
    </message>
    <message>
        <source>Modulation</source>
        <translation>変調</translation>
    </message>
    <message>
        <source>AM</source>
        <translation>AM</translation>
    </message>
    <message>
        <source>SSB Lower</source>
        <translation>SSB 下側</translation>
    </message>
    <message>
        <source>SSB Upper</source>
        <translation>SSB 上側</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>キャンセル(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
</context>
<context>
    <name>core</name>
    <message>
        <source>No audio device: playing silently</source>
        <translation>オーディオ機器がありません：無音で再生します</translation>
    </message>
    <message>
        <source>ZEMO: Error:</source>
        <translation>ZEMO：エラー：</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The sound is too large for this computer&apos;s memory.</source>
        <translation>音がこのコンピューターのメモリーに収まりません。</translation>
    </message>
    <message>
        <source>ZEMO saves .caf and .aif files: choose one of these extensions.</source>
        <translation>ZEMO は .caf と .aif で保存します。どちらかの拡張子を選んでください。</translation>
    </message>
    <message>
        <source>The sound is too large for AIFF-C, which ends at 4 GiB: save it as .caf instead.</source>
        <translation>音が大きすぎて AIFF-C（4 GiB まで）に収まりません。.caf で保存してください。</translation>
    </message>
    <message>
        <source>There is not enough memory to save the sound.</source>
        <translation>メモリーが足りないため音を保存できません。</translation>
    </message>
    <message>
        <source>This version of CAF is not known.</source>
        <translation>この CAF のバージョンには対応していません。</translation>
    </message>
    <message>
        <source>The CAF file has no audio description or no audio data.</source>
        <translation>CAF ファイルにオーディオの記述またはデータがありません。</translation>
    </message>
    <message>
        <source>The CAF file&apos;s audio description is wrong.</source>
        <translation>CAF ファイルのオーディオの記述が正しくありません。</translation>
    </message>
    <message>
        <source>The AIFF file has no common chunk.</source>
        <translation>AIFF ファイルに COMM チャンクがありません。</translation>
    </message>
    <message>
        <source>The AIFF file has no sound data.</source>
        <translation>AIFF ファイルに音のデータがありません。</translation>
    </message>
    <message>
        <source>The AIFF file&apos;s common chunk is wrong.</source>
        <translation>AIFF ファイルの COMM チャンクが正しくありません。</translation>
    </message>
    <message>
        <source>The AIFF-C file&apos;s compression is not known.</source>
        <translation>この AIFF-C ファイルの圧縮形式には対応していません。</translation>
    </message>
    <message>
        <source>The file is neither CAF nor AIFF.</source>
        <translation>ファイルは CAF でも AIFF でもありません。</translation>
    </message>
    <message>
        <source>Raw data file: No text</source>
        <translation>生データファイル：テキストなし</translation>
    </message>
    <message>
        <source>The export was cancelled.</source>
        <translation>書き出しをキャンセルしました。</translation>
    </message>
    <message>
        <source>ZEMO exports .wav and .flac files: choose one of these extensions.</source>
        <translation>ZEMO は .wav と .flac で書き出します。どちらかの拡張子を選んでください。</translation>
    </message>
    <message>
        <source>There is no sound to export.</source>
        <translation>書き出す音がありません。</translation>
    </message>
    <message>
        <source>The sound is too long for FLAC: export it as .wav instead.</source>
        <translation>音が長すぎて FLAC に収まりません。.wav で書き出してください。</translation>
    </message>
    <message>
        <source>FLAC, 24-bit</source>
        <translation>FLAC、24 ビット</translation>
    </message>
    <message>
        <source>WAV, 32-bit float</source>
        <translation>WAV、32 ビット浮動小数点</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>ファイルを読み取れません。</translation>
    </message>
    <message>
        <source>The file is not of a kind of sound file that is known.</source>
        <translation>対応していない種類のファイルです。</translation>
    </message>
    <message>
        <source>The sound file&apos;s coding is not known.</source>
        <translation>音声ファイルの符号化方式に対応していません。</translation>
    </message>
    <message>
        <source>The sound file is damaged, or of a kind that is not known.</source>
        <translation>音声ファイルが壊れているか、対応していない種類です。</translation>
    </message>
    <message>
        <source>The import was cancelled.</source>
        <translation>読み込みをキャンセルしました。</translation>
    </message>
    <message>
        <source>The file cannot be read to its end.</source>
        <translation>ファイルを最後まで読み取れません。</translation>
    </message>
    <message>
        <source>The sound file is damaged: nothing in it can be decoded.</source>
        <translation>音声ファイルが壊れています。復号できる部分がありません。</translation>
    </message>
    <message>
        <source>There is no sound in the file.</source>
        <translation>ファイルに音がありません。</translation>
    </message>
    <message>
        <source>The output&apos;s rate is below the rate of the envelope.</source>
        <translation>出力のレートがエンベロープのレートを下回っています。</translation>
    </message>
    <message>
        <source>The resampling ratio must be a number above 0.</source>
        <translation>リサンプルの比率は 0 より大きい数でなければなりません。</translation>
    </message>
    <message>
        <source>Only a sound of 3 to 2147483647 samples can be resampled.</source>
        <translation>リサンプルできるのは 3～2147483647 サンプルの音だけです。</translation>
    </message>
    <message>
        <source>With this ratio the sound would have no sample, or more than 2147483647.</source>
        <translation>この比率では、音のサンプルがなくなるか、2147483647 を超えます。</translation>
    </message>
    <message>
        <source>There is not enough memory for this transformation.</source>
        <translation>この変形に必要なメモリーがありません。</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>キャンセルしました。</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1.</source>
        <translation>ファイルを開けません：%1。</translation>
    </message>
    <message>
        <source>The file cannot be written: %1.</source>
        <translation>ファイルに書き込めません：%1。</translation>
    </message>
    <message>
        <source>ZEMO CAN&apos;T READ THE FILE:
%1</source>
        <translation>ZEMO はファイルを読み取れません：
%1</translation>
    </message>
    <message>
        <source>Raw data file: %1</source>
        <translation>生データファイル：%1</translation>
    </message>
    <message>
        <source>FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>FLAC が扱えるレートは 65535 Hz までの整数と 655350 Hz までの 10 の倍数ですが、この音は %1 Hz です。</translation>
    </message>
    <message>
        <source>WAV holds whole rates up to 4294967295 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>WAV が扱えるレートは 4294967295 Hz までの整数ですが、この音は %1 Hz です。</translation>
    </message>
    <message>
        <source>The sound file has %1 channels: 1 to %2 can be imported.</source>
        <translation>音声ファイルは %1 チャンネルです。読み込めるのは 1～%2 チャンネルです。</translation>
    </message>
    <message>
        <source>The sound file&apos;s rate of %1 Hz cannot be converted to %2 Hz.</source>
        <translation>音声ファイルのレート %1 Hz を %2 Hz に変換できません。</translation>
    </message>
    <message>
        <source>Format error:  (%1)
Application will quit</source>
        <translation>フォーマットエラー：（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>File writing error:  (%1)
Application will quit</source>
        <translation>ファイル書き込みエラー：（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>MIDI Client Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>MIDI クライアント作成エラー
アプリケーションを再起動してください：（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>MIDI Port Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>MIDI ポート作成エラー
アプリケーションを再起動してください：（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>Couldn&apos;t start output unit (%1)
Application will quit</source>
        <translation>出力を開始できませんでした（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>Couldn&apos;t stop output unit (%1)
Application will quit</source>
        <translation>出力を停止できませんでした（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>Couldn&apos;t open component for outputUnit (%1)
Application will quit</source>
        <translation>出力用コンポーネントを開けませんでした（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>AudioUnitSetProperty failed (%1)
Application will quit</source>
        <translation>AudioUnitSetProperty が失敗しました（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>AudioUnitGetProperty failed (%1)
Application will quit</source>
        <translation>AudioUnitGetProperty が失敗しました（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>Couldn&apos;t set StreamFormat on input scope / bus 0 (%1)
Application will quit</source>
        <translation>入力スコープ／バス 0 の StreamFormat を設定できませんでした（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>Couldn&apos;t initialize output unit (%1)
Application will quit</source>
        <translation>出力を初期化できませんでした（%1）
アプリケーションを終了します</translation>
    </message>
    <message>
        <source>The audio device went away: the play was ended</source>
        <translation>オーディオ機器が失われました：再生を終了しました</translation>
    </message>
    <message>
        <source>MIDI does not answer: no notes are read</source>
        <translation>MIDI が応答しません：ノートを読み取れません</translation>
    </message>
    <message>
        <source>MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again.</source>
        <translation>MIDI が失われました：ノートを読み取れません。「再生 ▸ MIDI を探し直す」を選んでください。</translation>
    </message>
</context>
<context>
    <name>fmPanel</name>
    <message>
        <source>Frequency Modulation</source>
        <translation>周波数変調</translation>
    </message>
    <message>
        <source>Replaces the sound by a sine whose phase it moves, under the sound’s own loudness.</source>
        <translation>音を正弦波で置き換えます。音がその位相を動かし、音量は元の音に従います。</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>周波数(&amp;F)</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>搬送波の周波数（ヘルツ）</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>指数(&amp;I)</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>変調指数</translation>
    </message>
    <message>
        <source>radians</source>
        <translation>ラジアン</translation>
    </message>
    <message>
        <source>&amp;Envelope</source>
        <translation>エンベロープ(&amp;E)</translation>
    </message>
    <message>
        <source>Envelope rate in hertz</source>
        <translation>エンベロープのレート（ヘルツ）</translation>
    </message>
    <message>
        <source>Hz, 4 to 32</source>
        <translation>Hz（4～32）</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>キャンセル(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
</context>
<context>
    <name>hdPanel</name>
    <message>
        <source>HD</source>
        <translation>HD</translation>
    </message>
    <message>
        <source>Adds even harmonics: the sound is bent, freed of DC, faded in and mixed with itself.</source>
        <translation>偶数次の倍音を加えます。音を曲げ、直流成分を除き、フェードインして、元の音と混ぜます。</translation>
    </message>
    <message>
        <source>&amp;Harmonics</source>
        <translation>倍音(&amp;H)</translation>
    </message>
    <message>
        <source>Harmonics</source>
        <translation>倍音</translation>
    </message>
    <message>
        <source>Second</source>
        <translation>第2</translation>
    </message>
    <message>
        <source>Fourth</source>
        <translation>第4</translation>
    </message>
    <message>
        <source>Hi&amp;gh-pass</source>
        <translation>ハイパス(&amp;G)</translation>
    </message>
    <message>
        <source>High-pass</source>
        <translation>ハイパス</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>オフ</translation>
    </message>
    <message>
        <source>500 Hz</source>
        <translation>500 Hz</translation>
    </message>
    <message>
        <source>1000 Hz</source>
        <translation>1000 Hz</translation>
    </message>
    <message>
        <source>at 44100 Hz</source>
        <translation>44100 Hz のとき</translation>
    </message>
    <message>
        <source>&amp;Slope</source>
        <translation>傾き(&amp;S)</translation>
    </message>
    <message>
        <source>Pole of the DC filter</source>
        <translation>直流除去フィルターの極</translation>
    </message>
    <message>
        <source>&amp;Attack</source>
        <translation>アタック(&amp;A)</translation>
    </message>
    <message>
        <source>Attack in samples</source>
        <translation>アタック（サンプル数）</translation>
    </message>
    <message>
        <source>samples, 100 to 1000</source>
        <translation>サンプル（100～1000）</translation>
    </message>
    <message>
        <source>&amp;Mix</source>
        <translation>ミックス(&amp;M)</translation>
    </message>
    <message>
        <source>Mix</source>
        <translation>ミックス</translation>
    </message>
    <message>
        <source>dry to wet</source>
        <translation>原音～倍音</translation>
    </message>
    <message>
        <source>&amp;Knee</source>
        <translation>ニー(&amp;K)</translation>
    </message>
    <message>
        <source>Knee</source>
        <translation>ニー</translation>
    </message>
    <message>
        <source>0 to 1</source>
        <translation>0～1</translation>
    </message>
    <message>
        <source>Com&amp;p</source>
        <translation>コンプ(&amp;P)</translation>
    </message>
    <message>
        <source>Compression slope</source>
        <translation>コンプレッションの傾き</translation>
    </message>
    <message>
        <source>Keep the sound’s peak &amp;level</source>
        <translation>音のピークレベルを保つ(&amp;L)</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>キャンセル(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
</context>
<context>
    <name>mainWindow</name>
    <message>
        <source>ZEMO</source>
        <translation>ZEMO</translation>
    </message>
    <message>
        <source>No sound yet</source>
        <translation>まだ音がありません</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>長さ</translation>
    </message>
    <message>
        <source>–</source>
        <translation>–</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>サンプル数</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>ピーク</translation>
    </message>
    <message>
        <source>Rate</source>
        <translation>レート</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>結果</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play the sound once, or stop it (Space)</source>
        <translation>音を一度再生、または停止（スペース）</translation>
    </message>
    <message>
        <source>What the meter shows: the peak or the RMS of each block (Ctrl+M)</source>
        <translation>メーターの表示：各ブロックのピークまたは RMS（Ctrl+M）</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>テスト</translation>
    </message>
    <message>
        <source>Show a random level on the meter; with Alt, clear it (Ctrl+T)</source>
        <translation>メーターに適当なレベルを表示。Alt と同時で消去（Ctrl+T）</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>ファイル(&amp;F)</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>編集(&amp;E)</translation>
    </message>
    <message>
        <source>P&amp;rocess</source>
        <translation>処理(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Play</source>
        <translation>再生(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>表示(&amp;V)</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>ヘルプ(&amp;H)</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>開く(&amp;O)…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Open as Ra&amp;w Data…</source>
        <translation>生データとして開く(&amp;W)…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>&amp;Import Audio…</source>
        <translation>オーディオを読み込む(&amp;I)…</translation>
    </message>
    <message>
        <source>Ctrl+I</source>
        <translation>Ctrl+I</translation>
    </message>
    <message>
        <source>&amp;Export Audio…</source>
        <translation>オーディオを書き出す(&amp;E)…</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>名前を付けて保存(&amp;A)…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+S</source>
        <translation>Ctrl+Shift+S</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>終了(&amp;Q)</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Revert</source>
        <translation>元に戻す(&amp;R)</translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation>Ctrl+Z</translation>
    </message>
    <message>
        <source>&amp;Resample…</source>
        <translation>リサンプル(&amp;R)…</translation>
    </message>
    <message>
        <source>&amp;AM…</source>
        <translation>AM(&amp;A)…</translation>
    </message>
    <message>
        <source>&amp;FM…</source>
        <translation>FM(&amp;F)…</translation>
    </message>
    <message>
        <source>&amp;HD…</source>
        <translation>HD(&amp;H)…</translation>
    </message>
    <message>
        <source>&amp;Play or Stop</source>
        <translation>再生／停止(&amp;P)</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Space</translation>
    </message>
    <message>
        <source>Peak or &amp;RMS</source>
        <translation>ピーク／RMS(&amp;R)</translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation>Ctrl+M</translation>
    </message>
    <message>
        <source>&amp;Test the Meter</source>
        <translation>メーターをテスト(&amp;T)</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>&amp;Spectrogram</source>
        <translation>スペクトログラム(&amp;S)</translation>
    </message>
    <message>
        <source>Ctrl+G</source>
        <translation>Ctrl+G</translation>
    </message>
    <message>
        <source>&amp;Manual</source>
        <translation>マニュアル(&amp;M)</translation>
    </message>
    <message>
        <source>F1</source>
        <translation>F1</translation>
    </message>
    <message>
        <source>&amp;About ZEMO</source>
        <translation>ZEMO について(&amp;A)</translation>
    </message>
    <message>
        <source>Name of the sound</source>
        <translation>音の名前</translation>
    </message>
    <message>
        <source>Why a file was refused</source>
        <translation>ファイルが拒否された理由</translation>
    </message>
    <message>
        <source>Notice about the output</source>
        <translation>出力についてのお知らせ</translation>
    </message>
    <message>
        <source>A sound that can be restored</source>
        <translation>復元できるサウンド</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>復元</translation>
    </message>
    <message>
        <source>Make this the sound; the copy stays until you save it</source>
        <translation>このサウンドを復元します。保存するまでコピーは残ります</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>破棄</translation>
    </message>
    <message>
        <source>Remove the copy</source>
        <translation>コピーを削除</translation>
    </message>
    <message>
        <source>&amp;Clear the Meter</source>
        <translation>メーターを消去(&amp;C)</translation>
    </message>
    <message>
        <source>Ctrl+Shift+T</source>
        <translation>Ctrl+Shift+T</translation>
    </message>
    <message>
        <source>&amp;Look for MIDI Again</source>
        <translation>MIDI を探し直す(&amp;L)</translation>
    </message>
</context>
<context>
    <name>resamplePanel</name>
    <message>
        <source>Resample</source>
        <translation>リサンプル</translation>
    </message>
    <message>
        <source>Changes the number of samples by the ratio. Above 1 the sound plays longer and lower, below 1 shorter and higher.</source>
        <translation>サンプル数を比率に従って変えます。1 より大きいと音は長く低く、1 より小さいと短く高くなります。</translation>
    </message>
    <message>
        <source>&amp;Ratio</source>
        <translation>比率(&amp;R)</translation>
    </message>
    <message>
        <source>Resampling ratio</source>
        <translation>リサンプルの比率</translation>
    </message>
    <message>
        <source>× length</source>
        <translation>× 長さ</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>キャンセル(&amp;C)</translation>
    </message>
    <message>
        <source>&amp;OK</source>
        <translation>&amp;OK</translation>
    </message>
</context>
<context>
    <name>zemo::AppDelegate</name>
    <message>
        <source>Open</source>
        <translation>開く</translation>
    </message>
    <message>
        <source>Swap Bytes</source>
        <translation>バイト順を入れ替える</translation>
    </message>
    <message>
        <source>Normalize</source>
        <translation>ノーマライズ</translation>
    </message>
    <message>
        <source>Opening %1…</source>
        <translation>%1 を開いています…</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>キャンセルしました</translation>
    </message>
    <message>
        <source>Open as Raw Data</source>
        <translation>生データとして開く</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>名前を付けて保存</translation>
    </message>
    <message>
        <source>Saving %1…</source>
        <translation>%1 を保存しています…</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>%1 として保存しました</translation>
    </message>
    <message>
        <source>%1 was not saved</source>
        <translation>%1 は保存されませんでした</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1（%2）</translation>
    </message>
    <message>
        <source>No sound</source>
        <translation>音がありません</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 秒</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>完了しました</translation>
    </message>
    <message>
        <source>Import Audio</source>
        <translation>オーディオを読み込む</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>読み込む</translation>
    </message>
    <message>
        <source>Importing %1…</source>
        <translation>%1 を読み込んでいます…</translation>
    </message>
    <message>
        <source>%1. The file is cut off.</source>
        <translation>%1。ファイルは途中で切れています。</translation>
    </message>
    <message>
        <source>Export Audio</source>
        <translation>オーディオを書き出す</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>書き出す</translation>
    </message>
    <message>
        <source>Exporting %1…</source>
        <translation>%1 を書き出しています…</translation>
    </message>
    <message>
        <source>Exported as %1 (%2)</source>
        <translation>%1（%2）として書き出しました</translation>
    </message>
    <message>
        <source>%1. Samples beyond full scale that were clipped: %2.</source>
        <translation>%1。フルスケールを超えてクリップしたサンプル：%2。</translation>
    </message>
    <message>
        <source>%1 is not a file</source>
        <translation>%1 はファイルではありません</translation>
    </message>
    <message>
        <source>Looking at %1…</source>
        <translation>%1 を調べています…</translation>
    </message>
    <message>
        <source>%1 is no sound file that ZEMO knows.</source>
        <translation>「%1」は ZEMO の知らない種類のファイルです。</translation>
    </message>
    <message>
        <source>It can be opened as raw data: every four bytes of it are one sample then.</source>
        <translation>生データとして開くことはできます。その場合、4 バイトごとに 1 サンプルになります。</translation>
    </message>
    <message>
        <source>About ZEMO</source>
        <translation>ZEMO について</translation>
    </message>
    <message>
        <source>ZEMO %1
Holds one sound, plays it and rewrites it.</source>
        <translation>ZEMO %1
ひとつの音を持ち、再生し、変形します。</translation>
    </message>
    <message>
        <source>%1 Hz</source>
        <translation>%1 Hz</translation>
    </message>
    <message>
        <source>Transforming the sound…</source>
        <translation>音を変形しています…</translation>
    </message>
    <message>
        <source>%1 is at %2 Hz, the output at %3 Hz. Import Audio… converts it.</source>
        <translation>%1 は %2 Hz、出力は %3 Hz です。「オーディオを読み込む…」で変換できます。</translation>
    </message>
    <message>
        <source>The samples of %1 are not 32-bit floats. Import Audio… converts them.</source>
        <translation>%1 のサンプルは 32 ビット浮動小数点数ではありません。「オーディオを読み込む…」で変換できます。</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message>
        <source>RMS</source>
        <translation>RMS</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>ピーク</translation>
    </message>
    <message>
        <source>mono</source>
        <translation>モノラル</translation>
    </message>
    <message>
        <source>%1 channels</source>
        <translation>%1 チャンネル</translation>
    </message>
    <message>
        <source>Imported: %1, %2, %3 Hz</source>
        <translation>読み込みました：%1、%2、%3 Hz</translation>
    </message>
    <message>
        <source>%1 has %2 channels, not one. Import Audio… converts it.</source>
        <translation>%1 はモノラルではなく %2 チャンネルです。「オーディオを読み込む…」で変換できます。</translation>
    </message>
    <message>
        <source>Not saved last time: %1 (%2, %3)</source>
        <translation>前回保存されなかったサウンド：%1（%2、%3）</translation>
    </message>
    <message>
        <source>No rescue copy of the sound can be kept: save it to be safe</source>
        <translation>サウンドの救出用コピーを残せません。念のため保存してください</translation>
    </message>
    <message>
        <source>%1 was not saved (1 of %2)</source>
        <translation>%1 は保存されませんでした（%2 件中 1 件目）</translation>
    </message>
    <message>
        <source>Close ZEMO</source>
        <translation>ZEMO を閉じる</translation>
    </message>
    <message>
        <source>If you close without saving, it is lost.</source>
        <translation>保存せずに閉じると、このサウンドは失われます。</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message>
        <source>Close Without Saving</source>
        <translation>保存せずに閉じる</translation>
    </message>
    <message>
        <source>Writing rescue copies…</source>
        <translation>救出用コピーを書き込んでいます…</translation>
    </message>
    <message>
        <source>The rescue copies take up too much disk space: the next one will remove the oldest, %1 first. Restore and save what you still need.</source>
        <translation>救出用コピーがディスクの容量を使いすぎています。次のコピーを残すときに、%1 から順に古いものが削除されます。必要なものは復元して保存してください。</translation>
    </message>
    <message>
        <source>%1 was not saved, and no rescue copy of it could be kept.</source>
        <translation>%1 は保存されておらず、救出用コピーも残せませんでした。</translation>
    </message>
    <message>
        <source>Looking for MIDI…</source>
        <translation>MIDI を探しています…</translation>
    </message>
    <message>
        <source>MIDI sources: %1</source>
        <translation>MIDI ソース：%1</translation>
    </message>
    <message>
        <source>MIDI cannot be used</source>
        <translation>MIDI を使用できません</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1～%2</translation>
    </message>
</context>
<context>
    <name>zemo::ManualWindow</name>
    <message>
        <source>ZEMO Manual</source>
        <translation>ZEMO マニュアル</translation>
    </message>
    <message>
        <source>Manual</source>
        <translation>マニュアル</translation>
    </message>
    <message>
        <source>There is no manual here: the file MANUAL.md is missing.</source>
        <translation>マニュアルがありません。ファイル MANUAL.md が見つかりません。</translation>
    </message>
    <message>
        <source>No program here opens %1.</source>
        <translation>%1 を開くプログラムがありません。</translation>
    </message>
</context>
<context>
    <name>zemo::OpenPanel</name>
    <message>
        <source>Names that are not UTF-8:</source>
        <translation>UTF-8 ではないファイル名:</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>選択…</translation>
    </message>
</context>
<context>
    <name>zemo::ProgressPanel</name>
    <message>
        <source>Please wait</source>
        <translation>お待ちください</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
</context>
<context>
    <name>zemo::SavePanel</name>
    <message>
        <source>The file&apos;s name must end in .%1.</source>
        <translation>ファイル名の末尾は .%1 のいずれかにしてください。</translation>
    </message>
</context>
<context>
    <name>zemo::SoundView</name>
    <message>
        <source>Picture of the sound</source>
        <translation>音の画像</translation>
    </message>
    <message>
        <source>Spectrogram</source>
        <translation>スペクトログラム</translation>
    </message>
    <message>
        <source>Show the sound by time and frequency, or as a wave (Ctrl+G)</source>
        <translation>音を時間と周波数、または波形で表示（Ctrl+G）</translation>
    </message>
    <message>
        <source>Open a sound, or drop a file here</source>
        <translation>音を開くか、ここにファイルをドロップ</translation>
    </message>
    <message>
        <source>There is no memory for a picture of this sound</source>
        <translation>この音の画像のためのメモリーがありません</translation>
    </message>
    <message>
        <source>Length %1, peak %2</source>
        <translation>長さ %1、ピーク %2</translation>
    </message>
    <message>
        <source>+1</source>
        <translation>+1</translation>
    </message>
    <message>
        <source>0</source>
        <translation>0</translation>
    </message>
    <message>
        <source>−1</source>
        <translation>−1</translation>
    </message>
    <message>
        <source>−120 to 0 dB</source>
        <translation>−120～0 dB</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>ピーク</translation>
    </message>
    <message>
        <source>RMS</source>
        <translation>RMS</translation>
    </message>
</context>
<context>
    <name>zemo::levelOpenGLView</name>
    <message>
        <source>Level meter</source>
        <translation>レベルメーター</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>無音</translation>
    </message>
    <message>
        <source>%1 dBFS</source>
        <translation>%1 dBFS</translation>
    </message>
</context>
</TS>
