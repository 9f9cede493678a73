#include <QRegularExpression>
#include <QVector>

#include "app/Languages.h"

namespace zemo {
namespace {

constexpr const char* kContext = "core";

// Every sentence that the rooms without Qt may give the user. The test `core_sentences` seeks them
// in their sources. Plain ones come first: a pattern would take them as well.
// NOLINTBEGIN(bugprone-suspicious-missing-comma): long sentences go on in the next line
constexpr const char* kPatterns[] = {
    // playback, platform/linux
    QT_TRANSLATE_NOOP("core", "No audio device: playing silently"),
    QT_TRANSLATE_NOOP("core", "The audio device went away: the play was ended"),
    QT_TRANSLATE_NOOP("core", "MIDI does not answer: no notes are read"),
    QT_TRANSLATE_NOOP("core",
                      "MIDI went away: no notes are read. Choose Play ▸ Look for MIDI Again."),
    QT_TRANSLATE_NOOP("core", "ZEMO: Error:"),
    QT_TRANSLATE_NOOP("core", "OK"),
    // files
    QT_TRANSLATE_NOOP("core", "The sound is too large for this computer's memory."),
    QT_TRANSLATE_NOOP("core", "ZEMO saves .caf and .aif files: choose one of these extensions."),
    QT_TRANSLATE_NOOP("core", "The sound is too large for AIFF-C, which ends at 4 GiB: "
                              "save it as .caf instead."),
    QT_TRANSLATE_NOOP("core", "There is not enough memory to save the sound."),
    QT_TRANSLATE_NOOP("core", "This version of CAF is not known."),
    QT_TRANSLATE_NOOP("core", "The CAF file has no audio description or no audio data."),
    QT_TRANSLATE_NOOP("core", "The CAF file's audio description is wrong."),
    QT_TRANSLATE_NOOP("core", "The AIFF file has no common chunk."),
    QT_TRANSLATE_NOOP("core", "The AIFF file has no sound data."),
    QT_TRANSLATE_NOOP("core", "The AIFF file's common chunk is wrong."),
    QT_TRANSLATE_NOOP("core", "The AIFF-C file's compression is not known."),
    QT_TRANSLATE_NOOP("core", "The file is neither CAF nor AIFF."),
    QT_TRANSLATE_NOOP("core", "Raw data file: No text"),
    // interchange
    QT_TRANSLATE_NOOP("core", "The export was cancelled."),
    QT_TRANSLATE_NOOP("core", "ZEMO exports .wav and .flac files: choose one of these extensions."),
    QT_TRANSLATE_NOOP("core", "There is no sound to export."),
    QT_TRANSLATE_NOOP("core", "The sound is too long for FLAC: export it as .wav instead."),
    QT_TRANSLATE_NOOP("core", "FLAC, 24-bit"),
    QT_TRANSLATE_NOOP("core", "WAV, 32-bit float"),
    QT_TRANSLATE_NOOP("core", "The file cannot be read."),
    QT_TRANSLATE_NOOP("core", "The file is not of a kind of sound file that is known."),
    QT_TRANSLATE_NOOP("core", "The sound file's coding is not known."),
    QT_TRANSLATE_NOOP("core", "The sound file is damaged, or of a kind that is not known."),
    QT_TRANSLATE_NOOP("core", "The import was cancelled."),
    QT_TRANSLATE_NOOP("core", "The file cannot be read to its end."),
    QT_TRANSLATE_NOOP("core", "The sound file is damaged: nothing in it can be decoded."),
    QT_TRANSLATE_NOOP("core", "There is no sound in the file."),
    // dsp
    QT_TRANSLATE_NOOP("core", "The output's rate is below the rate of the envelope."),
    QT_TRANSLATE_NOOP("core", "The resampling ratio must be a number above 0."),
    QT_TRANSLATE_NOOP("core", "Only a sound of 3 to 2147483647 samples can be resampled."),
    QT_TRANSLATE_NOOP("core",
                      "With this ratio the sound would have no sample, or more than 2147483647."),
    QT_TRANSLATE_NOOP("core", "There is not enough memory for this transformation."),
    QT_TRANSLATE_NOOP("core", "Cancelled."),
    // With places to be filled.
    QT_TRANSLATE_NOOP("core", "The file cannot be opened: %1."),
    QT_TRANSLATE_NOOP("core", "The file cannot be written: %1."),
    QT_TRANSLATE_NOOP("core", "ZEMO CAN'T READ THE FILE:\n%1"),
    QT_TRANSLATE_NOOP("core", "Raw data file: %1"),
    QT_TRANSLATE_NOOP("core", "FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz, "
                              "and the sound's is %1 Hz."),
    QT_TRANSLATE_NOOP("core",
                      "WAV holds whole rates up to 4294967295 Hz, and the sound's is %1 Hz."),
    QT_TRANSLATE_NOOP("core", "The sound file has %1 channels: 1 to %2 can be imported."),
    QT_TRANSLATE_NOOP("core", "The sound file's rate of %1 Hz cannot be converted to %2 Hz."),
    QT_TRANSLATE_NOOP("core", "Format error:  (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "File writing error:  (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "MIDI Client Create Error\nRelaunch Application: (%1)\n"
                              "Application will quit"),
    QT_TRANSLATE_NOOP("core", "MIDI Port Create Error\nRelaunch Application: (%1)\n"
                              "Application will quit"),
    QT_TRANSLATE_NOOP("core", "Couldn't start output unit (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "Couldn't stop output unit (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "Couldn't open component for outputUnit (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "AudioUnitSetProperty failed (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "AudioUnitGetProperty failed (%1)\nApplication will quit"),
    QT_TRANSLATE_NOOP("core", "Couldn't set StreamFormat on input scope / bus 0 (%1)\n"
                              "Application will quit"),
    QT_TRANSLATE_NOOP("core", "Couldn't initialize output unit (%1)\nApplication will quit"),
};
// NOLINTEND(bugprone-suspicious-missing-comma)

struct Pattern {
    const char* source;
    QRegularExpression expression;
};

QRegularExpression expressionFor(const QString& pattern) {
    QString expression = QRegularExpression::escape(pattern);
    expression.replace("\\%1", "(.*)").replace("\\%2", "(.*)");
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::DotMatchesEverythingOption);
}

const QVector<Pattern>& patterns() {
    static const QVector<Pattern> all = [] {
        QVector<Pattern> made;
        for (const char* const source : kPatterns) {
            made.push_back({source, expressionFor(source)});
        }
        return made;
    }();
    return all;
}

/// All places at once: what fills one of them may itself have a "%1" in it.
QString filled(const QString& text, const QStringList& parts) {
    switch (parts.size()) {
    case 0:
        return text;
    case 1:
        return text.arg(parts[0]);
    default:
        return text.arg(parts[0], parts[1]);
    }
}

} // namespace

QString translated(const QString& sentence) {
    for (const Pattern& pattern : patterns()) {
        const QRegularExpressionMatch match = pattern.expression.match(sentence);
        if (match.hasMatch()) {
            const QString text = QCoreApplication::translate(kContext, pattern.source);
            return text == pattern.source ? sentence : filled(text, match.capturedTexts().mid(1));
        }
    }
    return sentence;
}

QStringList sentencePatterns() {
    return {std::begin(kPatterns), std::end(kPatterns)};
}

} // namespace zemo
