#pragma once

#include <QCoreApplication>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTranslator>
#include <optional>

namespace zemo {

/// The texts of the window in another language than English, and Qt's own texts beside them where
/// they are installed. All of it is [main].
class Languages {
public:
    Languages() = default;
    Languages(const Languages&) = delete;
    Languages& operator=(const Languages&) = delete;
    ~Languages();

    /// The first of `wanted` (as QLocale::uiLanguages() has them, best first) that ZEMO speaks:
    /// "de", "fr", "ja"; empty for English, and when it speaks none of them.
    static QString choose(const QStringList& wanted);

    /// The languages beside English.
    static QStringList spoken();

    /// Has everything that is made from now on speak that language, until this object goes. Numbers
    /// are written as in the locale, if that is one of the language or was chosen for numbers alone
    /// (LC_NUMERIC), and else as in the language. False when there is no such language; then
    /// nothing is changed.
    bool install(const QString& language);

private:
    void writeNumbersAsIn(const QLocale& language);

    std::optional<QLocale> localeBefore_; ///< where it is not the one that there was
    QTranslator window_;
    QTranslator standard_; ///< buttons and panels of Qt
};

/// [main] A sentence of a room below, which knows no languages, as the window shows it. A sentence
/// that is not known, or has no translation, comes back as it is, to the letter.
QString translated(const QString& sentence);

/// [any] The patterns that such sentences follow: "%1" and "%2" stand for a name, a number or the
/// system's reason. Those without such places come first.
QStringList sentencePatterns();

} // namespace zemo
