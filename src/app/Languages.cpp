#include "app/Languages.h"

#include <QDir>
#include <QLibraryInfo>
#include <QLocale>

static void registerLanguagesResource() {
    Q_INIT_RESOURCE(languages);
}

namespace zemo {

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

bool Languages::install(const QString& language) {
    registerLanguagesResource();
    if (language.isEmpty() || !window_.load("zemo_" + language, ":/languages")) {
        return false;
    }
    // Ours is asked first: the one that was installed last is.
    if (standard_.load("qtbase_" + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(&standard_);
    }
    return QCoreApplication::installTranslator(&window_);
}

} // namespace zemo
