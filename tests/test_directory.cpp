#include "test_directory.h"

#include <unistd.h>

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMovie>
#include <QPushButton>
#include <QStyle>
#include <QTemporaryFile>
#include <QVBoxLayout>
#include <QVariant>
#include <iostream>

TestDirectory::TestDirectory() : old_directory(QDir::currentPath()), old_path(qgetenv("PATH")) {
    QDir::setCurrent(directory.path());
    QDir().mkdir(QStringLiteral("bin"));
    qputenv("PATH", QFile::encodeName(path(QStringLiteral("bin"))) + ":/usr/bin:/bin:" + old_path);
    qputenv("WORK", QFile::encodeName(directory.path()));
}

TestDirectory::~TestDirectory() {
    QDir::setCurrent(old_directory);
    qputenv("PATH", old_path);
}

void TestDirectory::write(const QString& file, const QByteArray& contents) const {
    QFile target(path(file));
    if (!target.open(QIODevice::WriteOnly) || target.write(contents) != contents.size()) {
        qFatal("%s", qPrintable(target.errorString()));
    }
}

QByteArray TestDirectory::read(const QString& file) const {
    QFile source(path(file));
    return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
}

void TestDirectory::fake_command(const QString& command, const QByteArray& script) const {
    const QString file = QStringLiteral("bin/") + command;
    write(file, "#!/bin/sh\n" + script);
    QFile::setPermissions(path(file), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QString TestDirectory::path(const QString& file) const {
    return directory.filePath(file);
}

Output output_of(const std::function<void()>& action) {
    QTemporaryFile out;
    QTemporaryFile err;
    out.open();
    err.open();
    std::cout.flush();
    const int old_out = dup(STDOUT_FILENO);
    const int old_err = dup(STDERR_FILENO);
    dup2(out.handle(), STDOUT_FILENO);
    dup2(err.handle(), STDERR_FILENO);
    action();
    std::cout.flush();
    dup2(old_out, STDOUT_FILENO);
    dup2(old_err, STDERR_FILENO);
    close(old_out);
    close(old_err);
    out.seek(0);
    err.seek(0);
    return {out.readAll(), err.readAll()};
}

namespace {

QString size_text(const QSize& size) {
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

QString traits(const QLabel& label) {
    QString text;
    if (QMovie* movie = label.movie()) {
        text += QStringLiteral(" movie %1 %2 %3")
                    .arg(movie->fileName(), size_text(movie->scaledSize()),
                         movie->state() == QMovie::Running ? QStringLiteral("running")
                                                           : QStringLiteral("stopped"));
    } else if (label.text().isEmpty()) {
        text += label.pixmap(Qt::ReturnByValue).isNull() ? QStringLiteral(" empty")
                                                         : QStringLiteral(" picture");
    }
    text += label.hasScaledContents() ? QStringLiteral(" scaled") : QString();
    text += label.wordWrap() ? QStringLiteral(" wrapped") : QString();
    return text + (label.alignment() == Qt::AlignCenter ? QStringLiteral(" centred") : QString());
}

QString traits(const QWidget& widget) {
    QString text = QString::fromLatin1(widget.metaObject()->className());
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        text += traits(*label);
    } else if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
        text += field->echoMode() == QLineEdit::Normal ? QStringLiteral(" clear") : QString();
    } else if (const auto* list = qobject_cast<const QComboBox*>(&widget)) {
        for (int i = 0; i < list->count(); ++i) {
            text += (i == list->currentIndex() ? QStringLiteral(" *") : QStringLiteral(" ")) +
                    list->itemText(i);
        }
        text += list->isEditable() ? QStringLiteral(" editable") : QString();
    }
    if (widget.minimumSize() == widget.maximumSize()) {
        text += QStringLiteral(" ") + size_text(widget.maximumSize());
    } else if (widget.maximumWidth() != QWIDGETSIZE_MAX) {
        text += QStringLiteral(" max-width %1").arg(widget.maximumWidth());
    }
    const QVariant style_class = widget.property("class");
    text += style_class.isValid() ? QStringLiteral(" .") + style_class.toString() : QString();
    if (!widget.styleSheet().isEmpty()) {
        text += QStringLiteral(" {") + widget.styleSheet() + QStringLiteral("}");
    }
    const QVariant shown = widget.property("text");
    return text + (shown.isValid() && !shown.toString().isEmpty()
                       ? QStringLiteral(" \"") + shown.toString() + QStringLiteral("\"")
                       : QString());
}

QString traits(QLayout& layout, const QWidget& widget) {
    QString text = QStringLiteral(" / ") + QString::fromLatin1(layout.metaObject()->className());
    if (layout.alignment() != 0) {
        text += QStringLiteral(" align 0x%1").arg(int(layout.alignment()), 0, 16);
    }
    if (layout.spacing() != widget.style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) &&
        qobject_cast<QBoxLayout*>(&layout) != nullptr) {
        text += QStringLiteral(" spacing %1").arg(layout.spacing());
    }
    return text + (layout.contentsMargins().isNull() ? QStringLiteral(" no margins") : QString());
}

QString snapshot_tree(const QWidget& widget, const QString& indent) {
    QString text = indent + traits(widget);
    QLayout* layout = widget.layout();
    if (layout == nullptr) {
        return text + QStringLiteral("\n");
    }
    text += traits(*layout, widget) + QStringLiteral("\n");
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        QString cell = indent + QStringLiteral("  ");
        if (const auto* grid = qobject_cast<QGridLayout*>(layout)) {
            int row = 0;
            int column = 0;
            int spans[2] = {0, 0};
            grid->getItemPosition(i, &row, &column, &spans[0], &spans[1]);
            cell += QStringLiteral("(%1,%2) ").arg(row).arg(column);
        }
        text += item->alignment() != 0 ? cell + QStringLiteral("aligned\n") : QString();
        text += item->widget() != nullptr ? snapshot_tree(*item->widget(), cell)
                                          : cell + QStringLiteral("no widget\n");
    }
    return text;
}

}  // namespace

QStringList snapshot(const QWidget& window) {
    return (QStringLiteral("[%1] ").arg(window.windowTitle()) + snapshot_tree(window, QString()))
        .split(QLatin1Char('\n'));
}
