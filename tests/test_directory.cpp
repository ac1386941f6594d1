#include "test_directory.h"

#include <unistd.h>

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMovie>
#include <QStyle>
#include <QTemporaryFile>
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
    write(file, "#!/bin/sh\n" + script + "\n");
    QFile::setPermissions(path(file), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QString TestDirectory::path(const QString& file) const {
    return directory.filePath(file);
}

Output output_of(const std::function<void()>& action) {
    QTemporaryFile files[2];
    int old_streams[2];
    std::cout.flush();
    for (const int i : {0, 1}) {
        files[i].open();
        old_streams[i] = dup(STDOUT_FILENO + i);
        dup2(files[i].handle(), STDOUT_FILENO + i);
    }
    action();
    std::cout.flush();
    for (const int i : {0, 1}) {
        dup2(old_streams[i], STDOUT_FILENO + i);
        close(old_streams[i]);
        files[i].seek(0);
    }
    return {files[0].readAll(), files[1].readAll()};
}

namespace {

QString text_if(bool holds, const char* text) {
    return holds ? QString::fromLatin1(text) : QString();
}

QString size_text(const QSize& size) {
    return QStringLiteral(" %1x%2").arg(size.width()).arg(size.height());
}

QString traits(const QLabel& label) {
    QString text;
    if (QMovie* movie = label.movie()) {
        text = QStringLiteral(" movie ") + movie->fileName() + size_text(movie->scaledSize()) +
               text_if(movie->state() == QMovie::Running, " running");
    } else if (!label.pixmap(Qt::ReturnByValue).isNull()) {
        text = QStringLiteral(" picture");
    }
    return text + text_if(label.hasScaledContents(), " scaled") +
           text_if(label.wordWrap(), " wrapped") +
           text_if(label.alignment() == Qt::AlignCenter, " centred") +
           text_if(label.buddy() != nullptr, " of a field");
}

QString traits(const QComboBox& list) {
    QString text = text_if(list.isEditable(), " editable");
    for (int i = 0; i < list.count(); ++i) {
        text +=
            text_if(i == list.currentIndex(), " current") + QStringLiteral(" ") + list.itemText(i);
    }
    return text;
}

QString traits(const QWidget& widget) {
    QString text = QString::fromLatin1(widget.metaObject()->className());
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        text += traits(*label);
    } else if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
        text += text_if(field->echoMode() == QLineEdit::Normal, " clear");
    } else if (const auto* list = qobject_cast<const QComboBox*>(&widget)) {
        text += traits(*list);
    }
    if (widget.minimumSize() == widget.maximumSize()) {
        text += size_text(widget.maximumSize());
    } else if (widget.maximumWidth() != QWIDGETSIZE_MAX) {
        text += QStringLiteral(" max-width %1").arg(widget.maximumWidth());
    }
    for (const auto& [property, form] :
         {std::make_pair("class", " .%1"), {"styleSheet", " {%1}"}, {"text", " \"%1\""}}) {
        const bool is_leaf = !widget.isWindow() && widget.layout() == nullptr;
        if (is_leaf && qstrcmp(property, "styleSheet") == 0) {
            continue;
        }
        const QString value = widget.property(property).toString();
        text += value.isEmpty() ? value : QString::fromLatin1(form).arg(value);
    }
    return text;
}

QString traits(const QLayout& layout, const QWidget& widget) {
    QString text = QStringLiteral(" / ") + QString::fromLatin1(layout.metaObject()->className());
    if (layout.alignment() != 0) {
        text += QStringLiteral(" align 0x%1").arg(int(layout.alignment()), 0, 16);
    }
    if (layout.spacing() != widget.style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) &&
        qobject_cast<const QBoxLayout*>(&layout) != nullptr) {
        text += QStringLiteral(" spacing %1").arg(layout.spacing());
    }
    return text + text_if(layout.contentsMargins().isNull(), " no margins");
}

QString snapshot_tree(const QWidget& widget, const QString& indent) {
    const QLayout* layout = widget.layout();
    QString text = indent + traits(widget);
    text += layout == nullptr ? QStringLiteral("\n") : traits(*layout, widget) + QLatin1Char('\n');
    for (int i = 0; layout != nullptr && i < layout->count(); ++i) {
        QString cell =
            indent + text_if(layout->itemAt(i)->alignment() != 0, "aligned") + QStringLiteral("  ");
        if (const auto* grid = qobject_cast<const QGridLayout*>(layout)) {
            int place[4];
            grid->getItemPosition(i, &place[0], &place[1], &place[2], &place[3]);
            cell += QStringLiteral("(%1,%2) ").arg(place[0]).arg(place[1]);
        }
        text += snapshot_tree(*layout->itemAt(i)->widget(), cell);
    }
    return text;
}

}  // namespace

QString snapshot(const QWidget& window) {
    return QStringLiteral("[%1] ").arg(window.windowTitle()) + snapshot_tree(window, QString());
}
