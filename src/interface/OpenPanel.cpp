#include "interface/OpenPanel.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaObject>
#include <QPushButton>
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "interface/FileNames.h"
#include "platform/Utf8.h"

namespace zemo {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNameField = "fileNameEdit"; ///< Qt's own

/// Of the regular files in a folder.
std::vector<std::string> namesThatAreNotUtf8(const std::atomic<bool>& stop,
                                             const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end && !stop;
         entry.increment(error)) {
        const std::string name = entry->path().filename();
        std::error_code ignored;
        if (!platform::isUtf8(name) && entry->is_regular_file(ignored)) {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

/// A look through a folder, which may be large, or far away and slow to answer.
struct OpenPanel::Search {
    std::atomic<bool> stop{false};
    std::mutex mutex;
    OpenPanel* panel = nullptr; ///< null once nobody wants the answer

    static void run(const std::shared_ptr<Search>& search, const std::string& folder) {
        auto names = namesThatAreNotUtf8(search->stop, folder);
        const std::lock_guard lock(search->mutex);
        if (OpenPanel* const panel = search->panel; panel != nullptr && !names.empty()) {
            const auto answer = [panel, search, names = std::move(names)] {
                if (search == panel->search_) {
                    panel->showNames(names);
                }
            };
            QMetaObject::invokeMethod(panel, answer, Qt::QueuedConnection);
        }
    }
};

OpenPanel::OpenPanel(QWidget* parent, const QString& title) : QFileDialog(parent, title) {
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(QFileDialog::ExistingFile);
    setAcceptMode(QFileDialog::AcceptOpen);

    auto* const label = new QLabel(tr("Names that are not UTF-8:"), this);
    names_ = new QComboBox(this);
    names_->setObjectName("namesThatAreNotUtf8");
    names_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    label->setBuddy(names_);
    namesRow_ = new QWidget(this);
    auto* const row = new QHBoxLayout(namesRow_);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(label);
    row->addWidget(names_, 1);
    namesRow_->hide();
    setAccessoryView(namesRow_);
    connect(names_, &QComboBox::textActivated, this, [this](const QString& name) {
        if (names_->currentIndex() > 0) {
            findChild<QLineEdit*>(kNameField)->setText(name);
        }
    });
    openButton_ = findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
    openButton_->installEventFilter(this);
    connect(findChild<QLineEdit*>(kNameField), &QLineEdit::textChanged, this,
            &OpenPanel::enableOpen);
    if (const auto* const model = findChild<QFileSystemModel*>()) {
        connect(model, &QFileSystemModel::rootPathChanged, this, &OpenPanel::look);
    }
    look(directory().absolutePath());
}

OpenPanel::~OpenPanel() {
    leaveOff();
}

void OpenPanel::setAccessoryView(QWidget* view) {
    auto* const grid = qobject_cast<QGridLayout*>(layout());
    grid->addWidget(view, grid->rowCount(), 0, 1, grid->columnCount());
}

void OpenPanel::look(const QString& folder) {
    leaveOff();
    namesRow_->hide();
    folder_ = bytesOfPath(folder);
    search_ = std::make_shared<Search>();
    search_->panel = this;
    try {
        std::thread(Search::run, search_, folder_).detach();
    } catch (const std::system_error&) { // no thread, no line
    }
}

void OpenPanel::leaveOff() {
    if (search_ != nullptr) {
        search_->stop = true;
        const std::lock_guard lock(search_->mutex);
        search_->panel = nullptr;
    }
}

void OpenPanel::showNames(const std::vector<std::string>& names) {
    names_->clear();
    names_->addItem(tr("Choose…"));
    for (const std::string& name : names) {
        names_->addItem(escapedName(name));
    }
    namesRow_->show();
}

/// The file whose name was typed with escapes; empty when that is the name of another file, or of
/// none.
QString OpenPanel::fileTyped() const {
    const QString typed = findChild<QLineEdit*>(kNameField)->text();
    std::error_code ignored;
    const fs::path plain = fs::path(folder_) / bytesOfPath(typed);
    const fs::path escaped =
        plain.parent_path() / unescapedName(typed.mid(typed.lastIndexOf('/') + 1));
    const bool isIt =
        escaped != plain && !fs::exists(plain, ignored) && fs::is_regular_file(escaped, ignored);
    return isIt ? pathFromBytes(escaped.native()) : QString();
}

/// Qt enables the button for the files alone that it lists.
void OpenPanel::enableOpen() {
    if (!openButton_->isEnabled() && !fileTyped().isEmpty()) {
        openButton_->setEnabled(true);
    }
}

bool OpenPanel::eventFilter(QObject* watched, QEvent* event) {
    if (watched == openButton_ && event->type() == QEvent::EnabledChange) {
        enableOpen();
    }
    return QFileDialog::eventFilter(watched, event);
}

QString OpenPanel::chosenFile() const {
    return escaped_.isEmpty() ? selectedFiles().value(0) : escaped_;
}

void OpenPanel::accept() {
    escaped_ = fileTyped();
    if (escaped_.isEmpty()) {
        QFileDialog::accept();
        return;
    }
    emit fileSelected(escaped_);
    QFileDialog::done(QDialog::Accepted);
}

} // namespace zemo
