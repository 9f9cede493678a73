#include "app/Languages.h"

#include <QDir>
#include <QLibraryInfo>

static void registerLanguagesResource() {
    Q_INIT_RESOURCE(languages);
}

namespace zemo {
namespace {

/// Whether somebody has chosen how numbers are written, apart from all else.
bool isNotationChosen() {
    for (const char* const variable : {"LC_ALL", "LC_NUMERIC"}) {
        const QString name = qEnvironmentVariable(variable);
        if (!name.isEmpty()) {
            return QLocale(name).language() != QLocale::C;
        }
    }
    return false;
}

/// The system's locale has its name by one variable and its numbers by another.
bool writesNumbersAsIn(const QLocale& locale, const QLocale& language) {
    return locale.language() == language.language() &&
           locale.decimalPoint() == QLocale(locale.name()).decimalPoint();
}

} // namespace

QStringList Languages::spoken() {
    registerLanguagesResource();
    QStringList result;
    for (const QString& file : QDir(":/languages").entryList({"zemo_*.qm"})) {
        result += file.mid(5, file.size() - 8);
    }
    return result;
}

/// English needs no file, so whoever wants it before the others is served with nothing.
QString Languages::choose(const QStringList& wanted) {
    const QStringList known = spoken();
    for (const QString& name : wanted) {
        QString language = QString(name).replace('-', '_').section('_', 0, 0);
        if (language == "en" || language == "C") {
            return {};
        }
        if (known.contains(language)) {
            return language;
        }
    }
    return {};
}

Languages::~Languages() {
    if (localeBefore_) {
        QLocale::setDefault(*localeBefore_);
    }
}

void Languages::writeNumbersAsIn(const QLocale& language) {
    if (!isNotationChosen() && !writesNumbersAsIn(QLocale(), language)) {
        localeBefore_ = QLocale();
        QLocale::setDefault(language);
    }
}

bool Languages::install(const QString& language) {
    registerLanguagesResource();
    if (language.isEmpty() || !window_.load("zemo_" + language, ":/languages")) {
        return false;
    }
    // Ours is asked first: the one that was installed last is.
    if (standard_.load("qtbase_" + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(&standard_);
    }
    writeNumbersAsIn(QLocale(language));
    return QCoreApplication::installTranslator(&window_);
}

} // namespace zemo
