<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>SoundRuler</name>
    <message>
        <source>%1 Hz</source>
        <translation>%1&#xa0;Hz</translation>
    </message>
    <message>
        <source>%1 kHz</source>
        <translation>%1&#xa0;kHz</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1&#xa0;s</translation>
    </message>
    <message>
        <source>−∞ dBFS</source>
        <translation>−∞ dBFS</translation>
    </message>
    <message>
        <source>%1 dBFS</source>
        <translation>%1&#xa0;dBFS</translation>
    </message>
    <message>
        <source>%1 beyond full scale</source>
        <translation>%1 über Vollaussteuerung</translation>
    </message>
    <message>
        <source>%1 not finite</source>
        <translation>%1 nicht endlich</translation>
    </message>
</context>
<context>
    <name>amPanel</name>
    <message>
        <source>Amplitude and Single-Sideband Modulation</source>
        <translation>Amplituden- und Einseitenbandmodulation</translation>
    </message>
    <message>
        <source>Multiplies the sound by a sine, or shifts its whole spectrum below or above a carrier.</source>
        <translation>Multipliziert den Klang mit einem Sinus oder verschiebt sein ganzes Spektrum unter oder über einen Träger.</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Frequenz</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>Trägerfrequenz in Hertz</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>&amp;Index</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>Modulationsindex</translation>
    </message>
    <message>
        <source>0 dry, 1 wet</source>
        <translation>0 trocken, 1 nass</translation>
    </message>
    <message>
        <source>&amp;Mode</source>
        <translation>&amp;Modus</translation>
    </message>
    <message>
        <source>Modulation</source>
        <translation>Modulation</translation>
    </message>
    <message>
        <source>AM</source>
        <translation>AM</translation>
    </message>
    <message>
        <source>SSB Lower</source>
        <translation>ESB unten</translation>
    </message>
    <message>
        <source>SSB Upper</source>
        <translation>ESB oben</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
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
        <translation>Kein Audiogerät: stumme Wiedergabe</translation>
    </message>
    <message>
        <source>ZEMO: Error:</source>
        <translation>ZEMO: Fehler:</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The sound is too large for this computer&apos;s memory.</source>
        <translation>Der Klang ist zu groß für den Speicher dieses Computers.</translation>
    </message>
    <message>
        <source>ZEMO saves .caf and .aif files: choose one of these extensions.</source>
        <translation>ZEMO speichert .caf- und .aif-Dateien: eine dieser Endungen wählen.</translation>
    </message>
    <message>
        <source>The sound is too large for AIFF-C, which ends at 4 GiB: save it as .caf instead.</source>
        <translation>Der Klang ist zu groß für AIFF-C, das bei 4&#xa0;GiB endet: stattdessen als .caf speichern.</translation>
    </message>
    <message>
        <source>There is not enough memory to save the sound.</source>
        <translation>Der Speicher reicht nicht, um den Klang zu speichern.</translation>
    </message>
    <message>
        <source>This version of CAF is not known.</source>
        <translation>Diese Version von CAF ist nicht bekannt.</translation>
    </message>
    <message>
        <source>The CAF file has no audio description or no audio data.</source>
        <translation>Der CAF-Datei fehlt die Audiobeschreibung oder die Audiodaten.</translation>
    </message>
    <message>
        <source>The CAF file&apos;s audio description is wrong.</source>
        <translation>Die Audiobeschreibung der CAF-Datei ist falsch.</translation>
    </message>
    <message>
        <source>The AIFF file has no common chunk.</source>
        <translation>Der AIFF-Datei fehlt der Common-Chunk.</translation>
    </message>
    <message>
        <source>The AIFF file has no sound data.</source>
        <translation>Der AIFF-Datei fehlen die Klangdaten.</translation>
    </message>
    <message>
        <source>The AIFF file&apos;s common chunk is wrong.</source>
        <translation>Der Common-Chunk der AIFF-Datei ist falsch.</translation>
    </message>
    <message>
        <source>The AIFF-C file&apos;s compression is not known.</source>
        <translation>Die Kompression der AIFF-C-Datei ist nicht bekannt.</translation>
    </message>
    <message>
        <source>The file is neither CAF nor AIFF.</source>
        <translation>Die Datei ist weder CAF noch AIFF.</translation>
    </message>
    <message>
        <source>Raw data file: No text</source>
        <translation>Rohdatendatei: Kein Text</translation>
    </message>
    <message>
        <source>The export was cancelled.</source>
        <translation>Der Export wurde abgebrochen.</translation>
    </message>
    <message>
        <source>ZEMO exports .wav and .flac files: choose one of these extensions.</source>
        <translation>ZEMO exportiert .wav- und .flac-Dateien: eine dieser Endungen wählen.</translation>
    </message>
    <message>
        <source>There is no sound to export.</source>
        <translation>Es ist kein Klang da, der exportiert werden könnte.</translation>
    </message>
    <message>
        <source>The sound is too long for FLAC: export it as .wav instead.</source>
        <translation>Der Klang ist zu lang für FLAC: stattdessen als .wav exportieren.</translation>
    </message>
    <message>
        <source>FLAC, 24-bit</source>
        <translation>FLAC, 24 Bit</translation>
    </message>
    <message>
        <source>WAV, 32-bit float</source>
        <translation>WAV, 32-Bit-Gleitkomma</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>Die Datei lässt sich nicht lesen.</translation>
    </message>
    <message>
        <source>The file is not of a kind of sound file that is known.</source>
        <translation>Die Datei ist keine Klangdatei einer bekannten Art.</translation>
    </message>
    <message>
        <source>The sound file&apos;s coding is not known.</source>
        <translation>Die Kodierung der Klangdatei ist nicht bekannt.</translation>
    </message>
    <message>
        <source>The sound file is damaged, or of a kind that is not known.</source>
        <translation>Die Klangdatei ist beschädigt oder von unbekannter Art.</translation>
    </message>
    <message>
        <source>The import was cancelled.</source>
        <translation>Der Import wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The file cannot be read to its end.</source>
        <translation>Die Datei lässt sich nicht bis zum Ende lesen.</translation>
    </message>
    <message>
        <source>The sound file is damaged: nothing in it can be decoded.</source>
        <translation>Die Klangdatei ist beschädigt: Nichts darin lässt sich dekodieren.</translation>
    </message>
    <message>
        <source>There is no sound in the file.</source>
        <translation>In der Datei ist kein Klang.</translation>
    </message>
    <message>
        <source>The output&apos;s rate is below the rate of the envelope.</source>
        <translation>Die Abtastrate der Ausgabe liegt unter der Rate der Hüllkurve.</translation>
    </message>
    <message>
        <source>The resampling ratio must be a number above 0.</source>
        <translation>Das Resampling-Verhältnis muss eine Zahl über 0 sein.</translation>
    </message>
    <message>
        <source>Only a sound of 3 to 2147483647 samples can be resampled.</source>
        <translation>Resampling braucht einen Klang von 3 bis 2147483647 Samples.</translation>
    </message>
    <message>
        <source>With this ratio the sound would have no sample, or more than 2147483647.</source>
        <translation>Mit diesem Verhältnis hätte der Klang kein Sample oder mehr als 2147483647.</translation>
    </message>
    <message>
        <source>There is not enough memory for this transformation.</source>
        <translation>Der Speicher reicht nicht für diese Umformung.</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Abgebrochen.</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1.</source>
        <translation>Die Datei lässt sich nicht öffnen: %1.</translation>
    </message>
    <message>
        <source>The file cannot be written: %1.</source>
        <translation>Die Datei lässt sich nicht schreiben: %1.</translation>
    </message>
    <message>
        <source>ZEMO CAN&apos;T READ THE FILE:
%1</source>
        <translation>ZEMO KANN DIE DATEI NICHT LESEN:
%1</translation>
    </message>
    <message>
        <source>Raw data file: %1</source>
        <translation>Rohdatendatei: %1</translation>
    </message>
    <message>
        <source>FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>FLAC fasst ganzzahlige Abtastraten bis 65535&#xa0;Hz und Vielfache von zehn bis 655350&#xa0;Hz; der Klang hat %1&#xa0;Hz.</translation>
    </message>
    <message>
        <source>WAV holds whole rates up to 4294967295 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>WAV fasst ganzzahlige Abtastraten bis 4294967295&#xa0;Hz; der Klang hat %1&#xa0;Hz.</translation>
    </message>
    <message>
        <source>The sound file has %1 channels: 1 to %2 can be imported.</source>
        <translation>Die Klangdatei hat %1 Kanäle: 1 bis %2 lassen sich importieren.</translation>
    </message>
    <message>
        <source>The sound file&apos;s rate of %1 Hz cannot be converted to %2 Hz.</source>
        <translation>Die Abtastrate der Klangdatei von %1&#xa0;Hz lässt sich nicht in %2&#xa0;Hz umwandeln.</translation>
    </message>
    <message>
        <source>Format error:  (%1)
Application will quit</source>
        <translation>Formatfehler: (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>File writing error:  (%1)
Application will quit</source>
        <translation>Fehler beim Schreiben der Datei: (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>MIDI Client Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>Fehler beim Anlegen des MIDI-Clients
Programm neu starten: (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>MIDI Port Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>Fehler beim Anlegen des MIDI-Ports
Programm neu starten: (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>Couldn&apos;t start output unit (%1)
Application will quit</source>
        <translation>Die Ausgabe ließ sich nicht starten (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>Couldn&apos;t stop output unit (%1)
Application will quit</source>
        <translation>Die Ausgabe ließ sich nicht anhalten (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>Couldn&apos;t open component for outputUnit (%1)
Application will quit</source>
        <translation>Die Komponente für die Ausgabe ließ sich nicht öffnen (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>AudioUnitSetProperty failed (%1)
Application will quit</source>
        <translation>AudioUnitSetProperty ist fehlgeschlagen (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>AudioUnitGetProperty failed (%1)
Application will quit</source>
        <translation>AudioUnitGetProperty ist fehlgeschlagen (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>Couldn&apos;t set StreamFormat on input scope / bus 0 (%1)
Application will quit</source>
        <translation>StreamFormat ließ sich für Eingang / Bus 0 nicht setzen (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>Couldn&apos;t initialize output unit (%1)
Application will quit</source>
        <translation>Die Ausgabe ließ sich nicht initialisieren (%1)
Das Programm wird beendet</translation>
    </message>
    <message>
        <source>The audio device went away: the play was ended</source>
        <translation>Das Audiogerät ist verschwunden: Die Wiedergabe wurde beendet</translation>
    </message>
    <message>
        <source>MIDI does not answer: no notes are read</source>
        <translation>MIDI antwortet nicht: Es werden keine Noten gelesen</translation>
    </message>
    <message>
        <source>MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again.</source>
        <translation>MIDI ist verschwunden: Es werden keine Noten gelesen. Wählen Sie „Wiedergabe ▸ Erneut nach MIDI suchen“.</translation>
    </message>
</context>
<context>
    <name>fmPanel</name>
    <message>
        <source>Frequency Modulation</source>
        <translation>Frequenzmodulation</translation>
    </message>
    <message>
        <source>Replaces the sound by a sine whose phase it moves, under the sound’s own loudness.</source>
        <translation>Ersetzt den Klang durch einen Sinus, dessen Phase er bewegt, mit der Lautstärke des Klangs selbst.</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Frequenz</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>Trägerfrequenz in Hertz</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>&amp;Index</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>Modulationsindex</translation>
    </message>
    <message>
        <source>radians</source>
        <translation>Radiant</translation>
    </message>
    <message>
        <source>&amp;Envelope</source>
        <translation>&amp;Hüllkurve</translation>
    </message>
    <message>
        <source>Envelope rate in hertz</source>
        <translation>Rate der Hüllkurve in Hertz</translation>
    </message>
    <message>
        <source>Hz, 4 to 32</source>
        <translation>Hz, 4 bis 32</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
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
        <translation>Fügt geradzahlige Obertöne hinzu: Der Klang wird gekrümmt, vom Gleichanteil befreit, eingeblendet und mit sich selbst gemischt.</translation>
    </message>
    <message>
        <source>&amp;Harmonics</source>
        <translation>O&amp;bertöne</translation>
    </message>
    <message>
        <source>Harmonics</source>
        <translation>Obertöne</translation>
    </message>
    <message>
        <source>Second</source>
        <translation>Zweiter</translation>
    </message>
    <message>
        <source>Fourth</source>
        <translation>Vierter</translation>
    </message>
    <message>
        <source>Hi&amp;gh-pass</source>
        <translation>&amp;Hochpass</translation>
    </message>
    <message>
        <source>High-pass</source>
        <translation>Hochpass</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>500 Hz</source>
        <translation>500&#xa0;Hz</translation>
    </message>
    <message>
        <source>1000 Hz</source>
        <translation>1000&#xa0;Hz</translation>
    </message>
    <message>
        <source>at 44100 Hz</source>
        <translation>bei 44100&#xa0;Hz</translation>
    </message>
    <message>
        <source>&amp;Slope</source>
        <translation>&amp;Steilheit</translation>
    </message>
    <message>
        <source>Pole of the DC filter</source>
        <translation>Pol des Gleichanteilfilters</translation>
    </message>
    <message>
        <source>&amp;Attack</source>
        <translation>A&amp;ttack</translation>
    </message>
    <message>
        <source>Attack in samples</source>
        <translation>Attack in Samples</translation>
    </message>
    <message>
        <source>samples, 100 to 1000</source>
        <translation>Samples, 100 bis 1000</translation>
    </message>
    <message>
        <source>&amp;Mix</source>
        <translation>&amp;Mischung</translation>
    </message>
    <message>
        <source>Mix</source>
        <translation>Mischung</translation>
    </message>
    <message>
        <source>dry to wet</source>
        <translation>trocken bis nass</translation>
    </message>
    <message>
        <source>&amp;Knee</source>
        <translation>&amp;Knie</translation>
    </message>
    <message>
        <source>Knee</source>
        <translation>Knie</translation>
    </message>
    <message>
        <source>0 to 1</source>
        <translation>0 bis 1</translation>
    </message>
    <message>
        <source>Com&amp;p</source>
        <translation>Kom&amp;p.</translation>
    </message>
    <message>
        <source>Compression slope</source>
        <translation>Steilheit der Kompression</translation>
    </message>
    <message>
        <source>Keep the sound’s peak &amp;level</source>
        <translation>Spitzenpe&amp;gel des Klangs beibehalten</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
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
        <translation>Noch kein Klang</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Länge</translation>
    </message>
    <message>
        <source>–</source>
        <translation>–</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>Samples</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Spitze</translation>
    </message>
    <message>
        <source>Rate</source>
        <translation>Abtastrate</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Play the sound once, or stop it (Space)</source>
        <translation>Den Klang einmal wiedergeben oder anhalten (Leertaste)</translation>
    </message>
    <message>
        <source>What the meter shows: the peak or the RMS of each block (Ctrl+M)</source>
        <translation>Was der Pegelmesser zeigt: Spitze oder RMS jedes Blocks (Strg+M)</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Test</translation>
    </message>
    <message>
        <source>Show a random level on the meter; with Alt, clear it (Ctrl+T)</source>
        <translation>Einen zufälligen Pegel anzeigen; mit Alt: Anzeige löschen (Strg+T)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>P&amp;rocess</source>
        <translation>&amp;Verarbeiten</translation>
    </message>
    <message>
        <source>&amp;Play</source>
        <translation>&amp;Wiedergabe</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>Ö&amp;ffnen&#xa0;…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Open as Ra&amp;w Data…</source>
        <translation>Als &amp;Rohdaten öffnen&#xa0;…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>&amp;Import Audio…</source>
        <translation>Audio &amp;importieren&#xa0;…</translation>
    </message>
    <message>
        <source>Ctrl+I</source>
        <translation>Ctrl+I</translation>
    </message>
    <message>
        <source>&amp;Export Audio…</source>
        <translation>Audio &amp;exportieren&#xa0;…</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>&amp;Speichern unter&#xa0;…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+S</source>
        <translation>Ctrl+Shift+S</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Revert</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation>Ctrl+Z</translation>
    </message>
    <message>
        <source>&amp;Resample…</source>
        <translation>&amp;Resampling&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;AM…</source>
        <translation>&amp;AM&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;FM…</source>
        <translation>&amp;FM&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;HD…</source>
        <translation>&amp;HD&#xa0;…</translation>
    </message>
    <message>
        <source>&amp;Play or Stop</source>
        <translation>&amp;Wiedergabe oder Stopp</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Space</translation>
    </message>
    <message>
        <source>Peak or &amp;RMS</source>
        <translation>Spitze oder &amp;RMS</translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation>Ctrl+M</translation>
    </message>
    <message>
        <source>&amp;Test the Meter</source>
        <translation>Pegelmesser &amp;testen</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>&amp;Spectrogram</source>
        <translation>&amp;Spektrogramm</translation>
    </message>
    <message>
        <source>Ctrl+G</source>
        <translation>Ctrl+G</translation>
    </message>
    <message>
        <source>&amp;Manual</source>
        <translation>&amp;Handbuch</translation>
    </message>
    <message>
        <source>F1</source>
        <translation>F1</translation>
    </message>
    <message>
        <source>&amp;About ZEMO</source>
        <translation>&amp;Über ZEMO</translation>
    </message>
    <message>
        <source>Name of the sound</source>
        <translation>Name des Klangs</translation>
    </message>
    <message>
        <source>Why a file was refused</source>
        <translation>Warum eine Datei abgelehnt wurde</translation>
    </message>
    <message>
        <source>Notice about the output</source>
        <translation>Hinweis zur Ausgabe</translation>
    </message>
    <message>
        <source>A sound that can be restored</source>
        <translation>Ein Klang, der wiederhergestellt werden kann</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Make this the sound; the copy stays until you save it</source>
        <translation>Diesen Klang zurückholen; die Kopie bleibt, bis er gespeichert ist</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>Remove the copy</source>
        <translation>Die Kopie entfernen</translation>
    </message>
    <message>
        <source>&amp;Clear the Meter</source>
        <translation>Pegelmesser &amp;leeren</translation>
    </message>
    <message>
        <source>Ctrl+Shift+T</source>
        <translation>Ctrl+Shift+T</translation>
    </message>
    <message>
        <source>&amp;Look for MIDI Again</source>
        <translation>Erneut nach M&amp;IDI suchen</translation>
    </message>
</context>
<context>
    <name>resamplePanel</name>
    <message>
        <source>Resample</source>
        <translation>Resampling</translation>
    </message>
    <message>
        <source>Changes the number of samples by the ratio. Above 1 the sound plays longer and lower, below 1 shorter and higher.</source>
        <translation>Ändert die Zahl der Samples um das Verhältnis. Über 1 klingt der Klang länger und tiefer, unter 1 kürzer und höher.</translation>
    </message>
    <message>
        <source>&amp;Ratio</source>
        <translation>&amp;Verhältnis</translation>
    </message>
    <message>
        <source>Resampling ratio</source>
        <translation>Resampling-Verhältnis</translation>
    </message>
    <message>
        <source>× length</source>
        <translation>× Länge</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Abbrechen</translation>
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
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Swap Bytes</source>
        <translation>Bytes vertauschen</translation>
    </message>
    <message>
        <source>Normalize</source>
        <translation>Normalisieren</translation>
    </message>
    <message>
        <source>Opening %1…</source>
        <translation>%1 wird geöffnet&#xa0;…</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Open as Raw Data</source>
        <translation>Als Rohdaten öffnen</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>Saving %1…</source>
        <translation>%1 wird gespeichert&#xa0;…</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>Gespeichert als %1</translation>
    </message>
    <message>
        <source>%1 was not saved</source>
        <translation>%1 wurde nicht gespeichert</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>No sound</source>
        <translation>Kein Klang</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1&#xa0;s</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Import Audio</source>
        <translation>Audio importieren</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importieren</translation>
    </message>
    <message>
        <source>Importing %1…</source>
        <translation>%1 wird importiert&#xa0;…</translation>
    </message>
    <message>
        <source>%1. The file is cut off.</source>
        <translation>%1. Die Datei ist abgeschnitten.</translation>
    </message>
    <message>
        <source>Export Audio</source>
        <translation>Audio exportieren</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exportieren</translation>
    </message>
    <message>
        <source>Exporting %1…</source>
        <translation>%1 wird exportiert&#xa0;…</translation>
    </message>
    <message>
        <source>Exported as %1 (%2)</source>
        <translation>Exportiert als %1 (%2)</translation>
    </message>
    <message>
        <source>%1. Samples beyond full scale that were clipped: %2.</source>
        <translation>%1. Samples über Vollaussteuerung, die begrenzt wurden: %2.</translation>
    </message>
    <message>
        <source>%1 is not a file</source>
        <translation>%1 ist keine Datei</translation>
    </message>
    <message>
        <source>Looking at %1…</source>
        <translation>%1 wird untersucht&#xa0;…</translation>
    </message>
    <message>
        <source>%1 is no sound file that ZEMO knows.</source>
        <translation>„%1“ ist keine Klangdatei, die ZEMO kennt.</translation>
    </message>
    <message>
        <source>It can be opened as raw data: every four bytes of it are one sample then.</source>
        <translation>Die Datei lässt sich als Rohdaten öffnen: Je vier Bytes sind dann ein Sample.</translation>
    </message>
    <message>
        <source>About ZEMO</source>
        <translation>Über ZEMO</translation>
    </message>
    <message>
        <source>ZEMO %1
Holds one sound, plays it and rewrites it.</source>
        <translation>ZEMO %1
Hält einen Klang, spielt ihn ab und formt ihn um.</translation>
    </message>
    <message>
        <source>%1 Hz</source>
        <translation>%1&#xa0;Hz</translation>
    </message>
    <message>
        <source>Transforming the sound…</source>
        <translation>Der Klang wird umgeformt&#xa0;…</translation>
    </message>
    <message>
        <source>%1 is at %2 Hz, the output at %3 Hz. Import Audio… converts it.</source>
        <translation>%1 hat %2&#xa0;Hz, die Ausgabe %3&#xa0;Hz. „Audio importieren&#xa0;…“ wandelt die Datei um.</translation>
    </message>
    <message>
        <source>The samples of %1 are not 32-bit floats. Import Audio… converts them.</source>
        <translation>Die Samples von %1 sind keine 32-Bit-Gleitkommazahlen. „Audio importieren&#xa0;…“ wandelt sie um.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>RMS</source>
        <translation>RMS</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Spitze</translation>
    </message>
    <message>
        <source>mono</source>
        <translation>mono</translation>
    </message>
    <message>
        <source>%1 channels</source>
        <translation>%1 Kanäle</translation>
    </message>
    <message>
        <source>Imported: %1, %2, %3 Hz</source>
        <translation>Importiert: %1, %2, %3&#xa0;Hz</translation>
    </message>
    <message>
        <source>%1 has %2 channels, not one. Import Audio… converts it.</source>
        <translation>%1 hat %2 Kanäle, nicht einen. „Audio importieren&#xa0;…“ wandelt die Datei um.</translation>
    </message>
    <message>
        <source>Not saved last time: %1 (%2, %3)</source>
        <translation>Zuletzt nicht gespeichert: %1 (%2, %3)</translation>
    </message>
    <message>
        <source>No rescue copy of the sound can be kept: save it to be safe</source>
        <translation>Es kann keine Rettungskopie des Klangs angelegt werden: zur Sicherheit speichern</translation>
    </message>
    <message>
        <source>%1 was not saved (1 of %2)</source>
        <translation>%1 wurde nicht gespeichert (1 von %2)</translation>
    </message>
    <message>
        <source>Close ZEMO</source>
        <translation>ZEMO schließen</translation>
    </message>
    <message>
        <source>If you close without saving, it is lost.</source>
        <translation>Beim Schließen ohne Speichern geht der Klang verloren.</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Close Without Saving</source>
        <translation>Ohne Speichern schließen</translation>
    </message>
    <message>
        <source>Writing rescue copies…</source>
        <translation>Rettungskopien werden geschrieben&#xa0;…</translation>
    </message>
    <message>
        <source>The rescue copies take up too much disk space: the next one will remove the oldest, %1 first. Restore and save what you still need.</source>
        <translation>Die Rettungskopien belegen zu viel Platz: die nächste verdrängt die ältesten, zuerst %1. Wiederherstellen und speichern, was noch gebraucht wird.</translation>
    </message>
    <message>
        <source>%1 was not saved, and no rescue copy of it could be kept.</source>
        <translation>%1 wurde nicht gespeichert, und es konnte keine Rettungskopie davon angelegt werden.</translation>
    </message>
    <message>
        <source>Looking for MIDI…</source>
        <translation>MIDI wird gesucht&#xa0;…</translation>
    </message>
    <message>
        <source>MIDI sources: %1</source>
        <translation>MIDI-Quellen: %1</translation>
    </message>
    <message>
        <source>MIDI cannot be used</source>
        <translation>MIDI kann nicht benutzt werden</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
</context>
<context>
    <name>zemo::ManualWindow</name>
    <message>
        <source>ZEMO Manual</source>
        <translation>ZEMO-Handbuch</translation>
    </message>
    <message>
        <source>Manual</source>
        <translation>Handbuch</translation>
    </message>
    <message>
        <source>There is no manual here: the file MANUAL.md is missing.</source>
        <translation>Hier ist kein Handbuch: Die Datei MANUAL.md fehlt.</translation>
    </message>
    <message>
        <source>No program here opens %1.</source>
        <translation>Kein Programm hier öffnet %1.</translation>
    </message>
</context>
<context>
    <name>zemo::OpenPanel</name>
    <message>
        <source>Names that are not UTF-8:</source>
        <translation>Namen, die nicht UTF-8 sind:</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Auswählen&#xa0;…</translation>
    </message>
</context>
<context>
    <name>zemo::ProgressPanel</name>
    <message>
        <source>Please wait</source>
        <translation>Bitte warten</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>zemo::SavePanel</name>
    <message>
        <source>The file&apos;s name must end in .%1.</source>
        <translation>Der Dateiname muss auf .%1 enden.</translation>
    </message>
</context>
<context>
    <name>zemo::SoundView</name>
    <message>
        <source>Picture of the sound</source>
        <translation>Bild des Klangs</translation>
    </message>
    <message>
        <source>Spectrogram</source>
        <translation>Spektrogramm</translation>
    </message>
    <message>
        <source>Show the sound by time and frequency, or as a wave (Ctrl+G)</source>
        <translation>Den Klang nach Zeit und Frequenz oder als Welle zeigen (Strg+G)</translation>
    </message>
    <message>
        <source>Open a sound, or drop a file here</source>
        <translation>Einen Klang öffnen oder eine Datei hier ablegen</translation>
    </message>
    <message>
        <source>There is no memory for a picture of this sound</source>
        <translation>Der Speicher reicht nicht für ein Bild dieses Klangs</translation>
    </message>
    <message>
        <source>Length %1, peak %2</source>
        <translation>Länge %1, Spitze %2</translation>
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
        <translation>−120 bis 0&#xa0;dB</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Spitze</translation>
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
        <translation>Pegelmesser</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>still</translation>
    </message>
    <message>
        <source>%1 dBFS</source>
        <translation>%1&#xa0;dBFS</translation>
    </message>
</context>
</TS>
