<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
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
        <translation>%1 au-delà de la pleine échelle</translation>
    </message>
    <message>
        <source>%1 not finite</source>
        <translation>%1 non finis</translation>
    </message>
</context>
<context>
    <name>amPanel</name>
    <message>
        <source>Amplitude and Single-Sideband Modulation</source>
        <translation>Modulation d’amplitude et à bande latérale unique</translation>
    </message>
    <message>
        <source>Multiplies the sound by a sine, or shifts its whole spectrum below or above a carrier.</source>
        <translation>Multiplie le son par une sinusoïde, ou décale tout son spectre au-dessous ou au-dessus d’une porteuse.</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Fréquence</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>Fréquence de la porteuse en hertz</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>&amp;Indice</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>Indice de modulation</translation>
    </message>
    <message>
        <source>0 dry, 1 wet</source>
        <translation>0&#xa0;: sans, 1&#xa0;: avec effet</translation>
    </message>
    <message>
        <source>&amp;Mode</source>
        <translation>&amp;Mode</translation>
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
        <translation>BLU inférieure</translation>
    </message>
    <message>
        <source>SSB Upper</source>
        <translation>BLU supérieure</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Annuler</translation>
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
        <translation>Aucun périphérique audio&#xa0;: lecture muette</translation>
    </message>
    <message>
        <source>ZEMO: Error:</source>
        <translation>ZEMO&#xa0;: Erreur&#xa0;:</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The sound is too large for this computer&apos;s memory.</source>
        <translation>Le son est trop grand pour la mémoire de cet ordinateur.</translation>
    </message>
    <message>
        <source>ZEMO saves .caf and .aif files: choose one of these extensions.</source>
        <translation>ZEMO enregistre des fichiers .caf et .aif&#xa0;: choisir l’une de ces extensions.</translation>
    </message>
    <message>
        <source>The sound is too large for AIFF-C, which ends at 4 GiB: save it as .caf instead.</source>
        <translation>Le son est trop grand pour AIFF-C, limité à 4&#xa0;GiB&#xa0;: l’enregistrer plutôt en .caf.</translation>
    </message>
    <message>
        <source>There is not enough memory to save the sound.</source>
        <translation>La mémoire ne suffit pas pour enregistrer le son.</translation>
    </message>
    <message>
        <source>This version of CAF is not known.</source>
        <translation>Cette version de CAF n’est pas connue.</translation>
    </message>
    <message>
        <source>The CAF file has no audio description or no audio data.</source>
        <translation>Le fichier CAF n’a pas de description audio ou pas de données audio.</translation>
    </message>
    <message>
        <source>The CAF file&apos;s audio description is wrong.</source>
        <translation>La description audio du fichier CAF est erronée.</translation>
    </message>
    <message>
        <source>The AIFF file has no common chunk.</source>
        <translation>Le fichier AIFF n’a pas de bloc commun (COMM).</translation>
    </message>
    <message>
        <source>The AIFF file has no sound data.</source>
        <translation>Le fichier AIFF n’a pas de données sonores.</translation>
    </message>
    <message>
        <source>The AIFF file&apos;s common chunk is wrong.</source>
        <translation>Le bloc commun (COMM) du fichier AIFF est erroné.</translation>
    </message>
    <message>
        <source>The AIFF-C file&apos;s compression is not known.</source>
        <translation>La compression du fichier AIFF-C n’est pas connue.</translation>
    </message>
    <message>
        <source>The file is neither CAF nor AIFF.</source>
        <translation>Le fichier n’est ni CAF ni AIFF.</translation>
    </message>
    <message>
        <source>Raw data file: No text</source>
        <translation>Fichier de données brutes&#xa0;: pas de texte</translation>
    </message>
    <message>
        <source>The export was cancelled.</source>
        <translation>L’exportation a été annulée.</translation>
    </message>
    <message>
        <source>ZEMO exports .wav and .flac files: choose one of these extensions.</source>
        <translation>ZEMO exporte des fichiers .wav et .flac&#xa0;: choisir l’une de ces extensions.</translation>
    </message>
    <message>
        <source>There is no sound to export.</source>
        <translation>Il n’y a pas de son à exporter.</translation>
    </message>
    <message>
        <source>The sound is too long for FLAC: export it as .wav instead.</source>
        <translation>Le son est trop long pour FLAC&#xa0;: l’exporter plutôt en .wav.</translation>
    </message>
    <message>
        <source>FLAC, 24-bit</source>
        <translation>FLAC, 24 bits</translation>
    </message>
    <message>
        <source>WAV, 32-bit float</source>
        <translation>WAV, 32 bits flottants</translation>
    </message>
    <message>
        <source>The file cannot be read.</source>
        <translation>Le fichier ne peut pas être lu.</translation>
    </message>
    <message>
        <source>The file is not of a kind of sound file that is known.</source>
        <translation>Le fichier n’est pas d’un type de fichier son connu.</translation>
    </message>
    <message>
        <source>The sound file&apos;s coding is not known.</source>
        <translation>Le codage du fichier son n’est pas connu.</translation>
    </message>
    <message>
        <source>The sound file is damaged, or of a kind that is not known.</source>
        <translation>Le fichier son est endommagé, ou d’un type inconnu.</translation>
    </message>
    <message>
        <source>The import was cancelled.</source>
        <translation>L’importation a été annulée.</translation>
    </message>
    <message>
        <source>The file cannot be read to its end.</source>
        <translation>Le fichier ne peut pas être lu jusqu’au bout.</translation>
    </message>
    <message>
        <source>The sound file is damaged: nothing in it can be decoded.</source>
        <translation>Le fichier son est endommagé&#xa0;: rien n’y peut être décodé.</translation>
    </message>
    <message>
        <source>There is no sound in the file.</source>
        <translation>Il n’y a pas de son dans le fichier.</translation>
    </message>
    <message>
        <source>The output&apos;s rate is below the rate of the envelope.</source>
        <translation>La fréquence de la sortie est inférieure à celle de l’enveloppe.</translation>
    </message>
    <message>
        <source>The resampling ratio must be a number above 0.</source>
        <translation>Le rapport de rééchantillonnage doit être un nombre supérieur à 0.</translation>
    </message>
    <message>
        <source>Only a sound of 3 to 2147483647 samples can be resampled.</source>
        <translation>Seul un son de 3 à 2147483647 échantillons peut être rééchantillonné.</translation>
    </message>
    <message>
        <source>With this ratio the sound would have no sample, or more than 2147483647.</source>
        <translation>Avec ce rapport, le son n’aurait aucun échantillon, ou plus de 2147483647.</translation>
    </message>
    <message>
        <source>There is not enough memory for this transformation.</source>
        <translation>La mémoire ne suffit pas pour cette transformation.</translation>
    </message>
    <message>
        <source>Cancelled.</source>
        <translation>Annulé.</translation>
    </message>
    <message>
        <source>The file cannot be opened: %1.</source>
        <translation>Le fichier ne peut pas être ouvert&#xa0;: %1.</translation>
    </message>
    <message>
        <source>The file cannot be written: %1.</source>
        <translation>Le fichier ne peut pas être écrit&#xa0;: %1.</translation>
    </message>
    <message>
        <source>ZEMO CAN&apos;T READ THE FILE:
%1</source>
        <translation>ZEMO NE PEUT PAS LIRE LE FICHIER&#xa0;:
%1</translation>
    </message>
    <message>
        <source>Raw data file: %1</source>
        <translation>Fichier de données brutes&#xa0;: %1</translation>
    </message>
    <message>
        <source>FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>FLAC accepte les fréquences entières jusqu’à 65535&#xa0;Hz, et les multiples de dix jusqu’à 655350&#xa0;Hz&#x202f;; celle du son est de %1&#xa0;Hz.</translation>
    </message>
    <message>
        <source>WAV holds whole rates up to 4294967295 Hz, and the sound&apos;s is %1 Hz.</source>
        <translation>WAV accepte les fréquences entières jusqu’à 4294967295&#xa0;Hz&#x202f;; celle du son est de %1&#xa0;Hz.</translation>
    </message>
    <message>
        <source>The sound file has %1 channels: 1 to %2 can be imported.</source>
        <translation>Le fichier son a %1 canaux&#xa0;: il peut en être importé de 1 à %2.</translation>
    </message>
    <message>
        <source>The sound file&apos;s rate of %1 Hz cannot be converted to %2 Hz.</source>
        <translation>La fréquence du fichier son, %1&#xa0;Hz, ne peut pas être convertie en %2&#xa0;Hz.</translation>
    </message>
    <message>
        <source>Format error:  (%1)
Application will quit</source>
        <translation>Erreur de format&#xa0;: (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>File writing error:  (%1)
Application will quit</source>
        <translation>Erreur d’écriture du fichier&#xa0;: (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>MIDI Client Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>Erreur de création du client MIDI
Relancer l’application&#xa0;: (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>MIDI Port Create Error
Relaunch Application: (%1)
Application will quit</source>
        <translation>Erreur de création du port MIDI
Relancer l’application&#xa0;: (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>Couldn&apos;t start output unit (%1)
Application will quit</source>
        <translation>Impossible de démarrer la sortie (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>Couldn&apos;t stop output unit (%1)
Application will quit</source>
        <translation>Impossible d’arrêter la sortie (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>Couldn&apos;t open component for outputUnit (%1)
Application will quit</source>
        <translation>Impossible d’ouvrir le composant de sortie (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>AudioUnitSetProperty failed (%1)
Application will quit</source>
        <translation>Échec de AudioUnitSetProperty (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>AudioUnitGetProperty failed (%1)
Application will quit</source>
        <translation>Échec de AudioUnitGetProperty (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>Couldn&apos;t set StreamFormat on input scope / bus 0 (%1)
Application will quit</source>
        <translation>Impossible de définir StreamFormat sur l’entrée / bus 0 (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>Couldn&apos;t initialize output unit (%1)
Application will quit</source>
        <translation>Impossible d’initialiser la sortie (%1)
L’application va quitter</translation>
    </message>
    <message>
        <source>The audio device went away: the play was ended</source>
        <translation>Le périphérique audio a disparu&#xa0;: la lecture a été arrêtée</translation>
    </message>
    <message>
        <source>MIDI does not answer: no notes are read</source>
        <translation>MIDI ne répond pas&#xa0;: aucune note n’est lue</translation>
    </message>
    <message>
        <source>MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again.</source>
        <translation>MIDI a disparu&#xa0;: aucune note n’est lue. Choisissez «&#xa0;Lecture ▸ Rechercher à nouveau le MIDI&#xa0;».</translation>
    </message>
</context>
<context>
    <name>fmPanel</name>
    <message>
        <source>Frequency Modulation</source>
        <translation>Modulation de fréquence</translation>
    </message>
    <message>
        <source>Replaces the sound by a sine whose phase it moves, under the sound’s own loudness.</source>
        <translation>Remplace le son par une sinusoïde dont il module la phase, en gardant l’intensité du son.</translation>
    </message>
    <message>
        <source>&amp;Frequency</source>
        <translation>&amp;Fréquence</translation>
    </message>
    <message>
        <source>Carrier frequency in hertz</source>
        <translation>Fréquence de la porteuse en hertz</translation>
    </message>
    <message>
        <source>Hz</source>
        <translation>Hz</translation>
    </message>
    <message>
        <source>&amp;Index</source>
        <translation>&amp;Indice</translation>
    </message>
    <message>
        <source>Modulation index</source>
        <translation>Indice de modulation</translation>
    </message>
    <message>
        <source>radians</source>
        <translation>radians</translation>
    </message>
    <message>
        <source>&amp;Envelope</source>
        <translation>&amp;Enveloppe</translation>
    </message>
    <message>
        <source>Envelope rate in hertz</source>
        <translation>Cadence de l’enveloppe en hertz</translation>
    </message>
    <message>
        <source>Hz, 4 to 32</source>
        <translation>Hz, de 4 à 32</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Annuler</translation>
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
        <translation>Ajoute des harmoniques pairs&#xa0;: le son est courbé, débarrassé de sa composante continue, ouvert en fondu et mélangé à lui-même.</translation>
    </message>
    <message>
        <source>&amp;Harmonics</source>
        <translation>&amp;Harmoniques</translation>
    </message>
    <message>
        <source>Harmonics</source>
        <translation>Harmoniques</translation>
    </message>
    <message>
        <source>Second</source>
        <translation>Deuxième</translation>
    </message>
    <message>
        <source>Fourth</source>
        <translation>Quatrième</translation>
    </message>
    <message>
        <source>Hi&amp;gh-pass</source>
        <translation>&amp;Passe-haut</translation>
    </message>
    <message>
        <source>High-pass</source>
        <translation>Passe-haut</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Sans</translation>
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
        <translation>à 44100&#xa0;Hz</translation>
    </message>
    <message>
        <source>&amp;Slope</source>
        <translation>Pe&amp;nte</translation>
    </message>
    <message>
        <source>Pole of the DC filter</source>
        <translation>Pôle du filtre de composante continue</translation>
    </message>
    <message>
        <source>&amp;Attack</source>
        <translation>A&amp;ttaque</translation>
    </message>
    <message>
        <source>Attack in samples</source>
        <translation>Attaque en échantillons</translation>
    </message>
    <message>
        <source>samples, 100 to 1000</source>
        <translation>échantillons, de 100 à 1000</translation>
    </message>
    <message>
        <source>&amp;Mix</source>
        <translation>&amp;Mélange</translation>
    </message>
    <message>
        <source>Mix</source>
        <translation>Mélange</translation>
    </message>
    <message>
        <source>dry to wet</source>
        <translation>du son brut à l’effet</translation>
    </message>
    <message>
        <source>&amp;Knee</source>
        <translation>&amp;Genou</translation>
    </message>
    <message>
        <source>Knee</source>
        <translation>Genou</translation>
    </message>
    <message>
        <source>0 to 1</source>
        <translation>de 0 à 1</translation>
    </message>
    <message>
        <source>Com&amp;p</source>
        <translation>&amp;Comp.</translation>
    </message>
    <message>
        <source>Compression slope</source>
        <translation>Pente de la compression</translation>
    </message>
    <message>
        <source>Keep the sound’s peak &amp;level</source>
        <translation>Conser&amp;ver le niveau de crête du son</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Annuler</translation>
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
        <translation>Pas encore de son</translation>
    </message>
    <message>
        <source>Length</source>
        <translation>Durée</translation>
    </message>
    <message>
        <source>–</source>
        <translation>–</translation>
    </message>
    <message>
        <source>Samples</source>
        <translation>Échantillons</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Crête</translation>
    </message>
    <message>
        <source>Rate</source>
        <translation>Fréquence</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Résultat</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêt</translation>
    </message>
    <message>
        <source>Play the sound once, or stop it (Space)</source>
        <translation>Lire le son une fois, ou l’arrêter (Espace)</translation>
    </message>
    <message>
        <source>What the meter shows: the peak or the RMS of each block (Ctrl+M)</source>
        <translation>Ce que montre le vumètre&#xa0;: la crête ou la valeur RMS de chaque bloc (Ctrl+M)</translation>
    </message>
    <message>
        <source>Test</source>
        <translation>Test</translation>
    </message>
    <message>
        <source>Show a random level on the meter; with Alt, clear it (Ctrl+T)</source>
        <translation>Afficher un niveau au hasard sur le vumètre&#x202f;; avec Alt, l’effacer (Ctrl+T)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>É&amp;dition</translation>
    </message>
    <message>
        <source>P&amp;rocess</source>
        <translation>&amp;Traitement</translation>
    </message>
    <message>
        <source>&amp;Play</source>
        <translation>&amp;Lecture</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Affichage</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>A&amp;ide</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Ouvrir…</translation>
    </message>
    <message>
        <source>Ctrl+O</source>
        <translation>Ctrl+O</translation>
    </message>
    <message>
        <source>Open as Ra&amp;w Data…</source>
        <translation>Ouvrir en données &amp;brutes…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+O</source>
        <translation>Ctrl+Shift+O</translation>
    </message>
    <message>
        <source>&amp;Import Audio…</source>
        <translation>&amp;Importer de l’audio…</translation>
    </message>
    <message>
        <source>Ctrl+I</source>
        <translation>Ctrl+I</translation>
    </message>
    <message>
        <source>&amp;Export Audio…</source>
        <translation>&amp;Exporter l’audio…</translation>
    </message>
    <message>
        <source>Ctrl+E</source>
        <translation>Ctrl+E</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Enregistrer &amp;sous…</translation>
    </message>
    <message>
        <source>Ctrl+Shift+S</source>
        <translation>Ctrl+Shift+S</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>Ctrl+Q</source>
        <translation>Ctrl+Q</translation>
    </message>
    <message>
        <source>&amp;Revert</source>
        <translation>&amp;Revenir en arrière</translation>
    </message>
    <message>
        <source>Ctrl+Z</source>
        <translation>Ctrl+Z</translation>
    </message>
    <message>
        <source>&amp;Resample…</source>
        <translation>&amp;Rééchantillonner…</translation>
    </message>
    <message>
        <source>&amp;AM…</source>
        <translation>&amp;AM…</translation>
    </message>
    <message>
        <source>&amp;FM…</source>
        <translation>&amp;FM…</translation>
    </message>
    <message>
        <source>&amp;HD…</source>
        <translation>&amp;HD…</translation>
    </message>
    <message>
        <source>&amp;Play or Stop</source>
        <translation>&amp;Lire ou arrêter</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Space</translation>
    </message>
    <message>
        <source>Peak or &amp;RMS</source>
        <translation>Crête ou &amp;RMS</translation>
    </message>
    <message>
        <source>Ctrl+M</source>
        <translation>Ctrl+M</translation>
    </message>
    <message>
        <source>&amp;Test the Meter</source>
        <translation>&amp;Tester le vumètre</translation>
    </message>
    <message>
        <source>Ctrl+T</source>
        <translation>Ctrl+T</translation>
    </message>
    <message>
        <source>&amp;Spectrogram</source>
        <translation>&amp;Spectrogramme</translation>
    </message>
    <message>
        <source>Ctrl+G</source>
        <translation>Ctrl+G</translation>
    </message>
    <message>
        <source>&amp;Manual</source>
        <translation>&amp;Manuel</translation>
    </message>
    <message>
        <source>F1</source>
        <translation>F1</translation>
    </message>
    <message>
        <source>&amp;About ZEMO</source>
        <translation>À &amp;propos de ZEMO</translation>
    </message>
    <message>
        <source>Name of the sound</source>
        <translation>Nom du son</translation>
    </message>
    <message>
        <source>Why a file was refused</source>
        <translation>Pourquoi un fichier a été refusé</translation>
    </message>
    <message>
        <source>Notice about the output</source>
        <translation>Remarque sur la sortie</translation>
    </message>
    <message>
        <source>A sound that can be restored</source>
        <translation>Un son qui peut être restauré</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Restaurer</translation>
    </message>
    <message>
        <source>Make this the sound; the copy stays until you save it</source>
        <translation>Reprendre ce son&#xa0;; la copie reste jusqu’à son enregistrement</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Supprimer</translation>
    </message>
    <message>
        <source>Remove the copy</source>
        <translation>Supprimer la copie</translation>
    </message>
    <message>
        <source>&amp;Clear the Meter</source>
        <translation>&amp;Effacer le vumètre</translation>
    </message>
    <message>
        <source>Ctrl+Shift+T</source>
        <translation>Ctrl+Shift+T</translation>
    </message>
    <message>
        <source>&amp;Look for MIDI Again</source>
        <translation>Rec&amp;hercher à nouveau le MIDI</translation>
    </message>
</context>
<context>
    <name>resamplePanel</name>
    <message>
        <source>Resample</source>
        <translation>Rééchantillonnage</translation>
    </message>
    <message>
        <source>Changes the number of samples by the ratio. Above 1 the sound plays longer and lower, below 1 shorter and higher.</source>
        <translation>Change le nombre d’échantillons selon le rapport. Au-dessus de 1, le son devient plus long et plus grave&#x202f;; au-dessous de 1, plus court et plus aigu.</translation>
    </message>
    <message>
        <source>&amp;Ratio</source>
        <translation>&amp;Rapport</translation>
    </message>
    <message>
        <source>Resampling ratio</source>
        <translation>Rapport de rééchantillonnage</translation>
    </message>
    <message>
        <source>× length</source>
        <translation>× la durée</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>&amp;Annuler</translation>
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
        <translation>Ouvrir</translation>
    </message>
    <message>
        <source>Swap Bytes</source>
        <translation>Permuter les octets</translation>
    </message>
    <message>
        <source>Normalize</source>
        <translation>Normaliser</translation>
    </message>
    <message>
        <source>Opening %1…</source>
        <translation>Ouverture de %1…</translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Annulé</translation>
    </message>
    <message>
        <source>Open as Raw Data</source>
        <translation>Ouvrir en données brutes</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Enregistrer sous</translation>
    </message>
    <message>
        <source>Saving %1…</source>
        <translation>Enregistrement de %1…</translation>
    </message>
    <message>
        <source>Saved as %1</source>
        <translation>Enregistré sous %1</translation>
    </message>
    <message>
        <source>%1 was not saved</source>
        <translation>%1 n’a pas été enregistré</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>No sound</source>
        <translation>Pas de son</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1&#xa0;s</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Terminé</translation>
    </message>
    <message>
        <source>Import Audio</source>
        <translation>Importer de l’audio</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>Importer</translation>
    </message>
    <message>
        <source>Importing %1…</source>
        <translation>Importation de %1…</translation>
    </message>
    <message>
        <source>%1. The file is cut off.</source>
        <translation>%1. Le fichier est tronqué.</translation>
    </message>
    <message>
        <source>Export Audio</source>
        <translation>Exporter l’audio</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Exporter</translation>
    </message>
    <message>
        <source>Exporting %1…</source>
        <translation>Exportation de %1…</translation>
    </message>
    <message>
        <source>Exported as %1 (%2)</source>
        <translation>Exporté sous %1 (%2)</translation>
    </message>
    <message>
        <source>%1. Samples beyond full scale that were clipped: %2.</source>
        <translation>%1. Échantillons au-delà de la pleine échelle qui ont été écrêtés&#xa0;: %2.</translation>
    </message>
    <message>
        <source>%1 is not a file</source>
        <translation>%1 n’est pas un fichier</translation>
    </message>
    <message>
        <source>Looking at %1…</source>
        <translation>Examen de %1…</translation>
    </message>
    <message>
        <source>%1 is no sound file that ZEMO knows.</source>
        <translation>«&#xa0;%1&#xa0;» n’est pas un fichier son que ZEMO connaît.</translation>
    </message>
    <message>
        <source>It can be opened as raw data: every four bytes of it are one sample then.</source>
        <translation>Il peut être ouvert en données brutes&#xa0;: quatre octets forment alors un échantillon.</translation>
    </message>
    <message>
        <source>About ZEMO</source>
        <translation>À propos de ZEMO</translation>
    </message>
    <message>
        <source>ZEMO %1
Holds one sound, plays it and rewrites it.</source>
        <translation>ZEMO %1
Contient un son, le joue et le transforme.</translation>
    </message>
    <message>
        <source>%1 Hz</source>
        <translation>%1&#xa0;Hz</translation>
    </message>
    <message>
        <source>Transforming the sound…</source>
        <translation>Transformation du son…</translation>
    </message>
    <message>
        <source>%1 is at %2 Hz, the output at %3 Hz. Import Audio… converts it.</source>
        <translation>%1 est à %2&#xa0;Hz, la sortie à %3&#xa0;Hz. «&#xa0;Importer de l’audio…&#xa0;» le convertit.</translation>
    </message>
    <message>
        <source>The samples of %1 are not 32-bit floats. Import Audio… converts them.</source>
        <translation>Les échantillons de %1 ne sont pas des flottants 32 bits. «&#xa0;Importer de l’audio…&#xa0;» les convertit.</translation>
    </message>
    <message>
        <source>Stop</source>
        <translation>Arrêt</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Lecture</translation>
    </message>
    <message>
        <source>RMS</source>
        <translation>RMS</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Crête</translation>
    </message>
    <message>
        <source>mono</source>
        <translation>mono</translation>
    </message>
    <message>
        <source>%1 channels</source>
        <translation>%1 canaux</translation>
    </message>
    <message>
        <source>Imported: %1, %2, %3 Hz</source>
        <translation>Importé&#xa0;: %1, %2, %3&#xa0;Hz</translation>
    </message>
    <message>
        <source>%1 has %2 channels, not one. Import Audio… converts it.</source>
        <translation>%1 a %2 canaux, et non un seul. «&#xa0;Importer de l’audio…&#xa0;» le convertit.</translation>
    </message>
    <message>
        <source>Not saved last time: %1 (%2, %3)</source>
        <translation>Non enregistré la dernière fois&#xa0;: %1 (%2, %3)</translation>
    </message>
    <message>
        <source>No rescue copy of the sound can be kept: save it to be safe</source>
        <translation>Aucune copie de secours du son ne peut être gardée&#xa0;: enregistrez-le par sécurité</translation>
    </message>
    <message>
        <source>%1 was not saved (1 of %2)</source>
        <translation>%1 n’a pas été enregistré (1 sur %2)</translation>
    </message>
    <message>
        <source>Close ZEMO</source>
        <translation>Fermer ZEMO</translation>
    </message>
    <message>
        <source>If you close without saving, it is lost.</source>
        <translation>Si vous fermez sans enregistrer, ce son est perdu.</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Enregistrer</translation>
    </message>
    <message>
        <source>Close Without Saving</source>
        <translation>Fermer sans enregistrer</translation>
    </message>
    <message>
        <source>Writing rescue copies…</source>
        <translation>Écriture des copies de secours…</translation>
    </message>
    <message>
        <source>The rescue copies take up too much disk space: the next one will remove the oldest, %1 first. Restore and save what you still need.</source>
        <translation>Les copies de secours prennent trop de place&#xa0;: la prochaine supprimera les plus anciennes, %1 en premier. Restaurez et enregistrez ce dont vous avez besoin.</translation>
    </message>
    <message>
        <source>%1 was not saved, and no rescue copy of it could be kept.</source>
        <translation>%1 n’a pas été enregistré, et aucune copie de secours n’a pu en être gardée.</translation>
    </message>
    <message>
        <source>Looking for MIDI…</source>
        <translation>Recherche du MIDI…</translation>
    </message>
    <message>
        <source>MIDI sources: %1</source>
        <translation>Sources MIDI&#xa0;: %1</translation>
    </message>
    <message>
        <source>MIDI cannot be used</source>
        <translation>Le MIDI ne peut pas être utilisé</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>de %1 à %2</translation>
    </message>
</context>
<context>
    <name>zemo::ManualWindow</name>
    <message>
        <source>ZEMO Manual</source>
        <translation>Manuel de ZEMO</translation>
    </message>
    <message>
        <source>Manual</source>
        <translation>Manuel</translation>
    </message>
    <message>
        <source>There is no manual here: the file MANUAL.md is missing.</source>
        <translation>Il n’y a pas de manuel ici&#xa0;: le fichier MANUAL.md manque.</translation>
    </message>
    <message>
        <source>No program here opens %1.</source>
        <translation>Aucun programme ici n’ouvre %1.</translation>
    </message>
</context>
<context>
    <name>zemo::OpenPanel</name>
    <message>
        <source>Names that are not UTF-8:</source>
        <translation>Noms qui ne sont pas en UTF-8&#xa0;:</translation>
    </message>
    <message>
        <source>Choose…</source>
        <translation>Choisir…</translation>
    </message>
</context>
<context>
    <name>zemo::ProgressPanel</name>
    <message>
        <source>Please wait</source>
        <translation>Veuillez patienter</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>zemo::SavePanel</name>
    <message>
        <source>The file&apos;s name must end in .%1.</source>
        <translation>Le nom du fichier doit se terminer par .%1.</translation>
    </message>
</context>
<context>
    <name>zemo::SoundView</name>
    <message>
        <source>Picture of the sound</source>
        <translation>Image du son</translation>
    </message>
    <message>
        <source>Spectrogram</source>
        <translation>Spectrogramme</translation>
    </message>
    <message>
        <source>Show the sound by time and frequency, or as a wave (Ctrl+G)</source>
        <translation>Montrer le son en temps et fréquence, ou en forme d’onde (Ctrl+G)</translation>
    </message>
    <message>
        <source>Open a sound, or drop a file here</source>
        <translation>Ouvrir un son, ou déposer un fichier ici</translation>
    </message>
    <message>
        <source>There is no memory for a picture of this sound</source>
        <translation>La mémoire manque pour une image de ce son</translation>
    </message>
    <message>
        <source>Length %1, peak %2</source>
        <translation>Durée %1, crête %2</translation>
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
        <translation>de −120 à 0&#xa0;dB</translation>
    </message>
    <message>
        <source>Peak</source>
        <translation>Crête</translation>
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
        <translation>Vumètre</translation>
    </message>
    <message>
        <source>silent</source>
        <translation>silence</translation>
    </message>
    <message>
        <source>%1 dBFS</source>
        <translation>%1&#xa0;dBFS</translation>
    </message>
</context>
</TS>
