#include "platform/host/qt_command_completer.h"

#include <QAbstractItemView>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <memory>

namespace platform::host {

namespace {

constexpr int kMostVisible = 10;
constexpr int kMostPaths = 200;

/// The word that the cursor stands in or behind, and the one before it.
struct TypedWord {
    explicit TypedWord(const QLineEdit& box) {
        const QString text = box.text();
        const qsizetype cursor = box.cursorPosition();
        begin = cursor == 0 ? 0 : text.lastIndexOf(QLatin1Char(' '), cursor - 1) + 1;
        end = text.indexOf(QLatin1Char(' '), cursor);
        if (end < 0) end = text.size();
        start = text.mid(begin, cursor - begin);
        before = text.left(std::max<qsizetype>(begin - 1, 0)).section(QLatin1Char(' '), -1);
    }
    qsizetype begin;
    qsizetype end;
    QString start;   // up to the cursor
    QString before;  // "" at the command's beginning
};

std::vector<CommandWord> PathsThatBegin(const QString& start) {
    const QFileInfo typed(start);
    const QString folder =
        start.section(QLatin1Char('/'), 0, -2, QString::SectionIncludeTrailingSep);
    std::vector<CommandWord> paths;
    const QDir dir(folder.isEmpty() ? QStringLiteral(".") : folder);
    const QString name = start.mid(folder.size());
    for (const QFileInfo& entry :
         dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name)) {
        if (!entry.fileName().startsWith(name) || entry.fileName().contains(QLatin1Char(' ')))
            continue;
        const QString end = entry.isDir() ? QStringLiteral("/") : QString();
        paths.push_back({(folder + entry.fileName() + end).toStdString(), ""});
        if (paths.size() == kMostPaths) break;
    }
    return paths;
}

}  // namespace

CommandCompleter::CommandCompleter(QLineEdit& box) : QCompleter(&box), box_(box) {
    setModel(&words_);
    setWidget(&box);
    setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    setMaxVisibleItems(kMostVisible);
    popup()->setObjectName(QStringLiteral("completions"));
    popup()->setAccessibleName(tr("Words that can follow"));
    connect(&box, &QLineEdit::textEdited, this, [this] { Offer(); });
    connect(this, qOverload<const QModelIndex&>(&QCompleter::activated), this,
            [this](const QModelIndex& index) { Take(index.data(Qt::UserRole).toString()); });
}

bool CommandCompleter::HasChosen() const {
    return popup()->isVisible() && popup()->currentIndex().isValid();
}

void CommandCompleter::Offer() {
    const TypedWord typed(box_);
    words_.clear();
    const bool after_option = typed.before.startsWith(QLatin1Char('-'));
    if (form_ == nullptr || (typed.start.isEmpty() && !after_option)) return popup()->hide();
    FollowingWords following = form_->WordsAfter(typed.before.toStdString());
    const bool is_option = typed.start.startsWith(QLatin1Char('-'));
    if (typed.start.isEmpty() && following.paths) return popup()->hide();
    if (is_option) following = form_->WordsAfter("");
    if (following.paths) following.words = PathsThatBegin(typed.start);
    for (const CommandWord& word : following.words) {
        const QString text = QString::fromStdString(word.word);
        if (!text.startsWith(typed.start, Qt::CaseInsensitive) || text == typed.start) continue;
        const QString note = QString::fromStdString(word.note);
        auto item = std::make_unique<QStandardItem>(
            note.isEmpty() ? text : text + QStringLiteral("    ") + note);
        item->setData(text, Qt::UserRole);
        words_.appendRow(item.release());
    }
    if (words_.rowCount() == 0) return popup()->hide();
    complete();
    popup()->setCurrentIndex(QModelIndex());
}

void CommandCompleter::Take(const QString& word) {
    const TypedWord typed(box_);
    // No blank behind it: the next one to be typed would be the second in a row.
    QString text = box_.text();
    text.replace(typed.begin, typed.end - typed.begin, word);
    box_.setText(text);
    box_.setCursorPosition(static_cast<int>(typed.begin + word.size()));
    if (word.endsWith(QLatin1Char('/'))) Offer();
}

}  // namespace platform::host
