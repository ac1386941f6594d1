#include "question.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include "screen_pieces.h"

bool confirmed(QWidget* window, const QString& question, const QString& consequence) {
    QMessageBox box(QMessageBox::Question, QStringLiteral("Quorvale"), question,
                    QMessageBox::NoButton, window);
    box.setObjectName(QStringLiteral("question"));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(consequence);
    // The box's text format does not reach this one.
    box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))
        ->setTextFormat(Qt::PlainText);
    const auto* yes =
        named("yes_button", box.addButton(QStringLiteral("Oui"), QMessageBox::YesRole));
    auto* no = named("no_button", box.addButton(QStringLiteral("Non"), QMessageBox::NoRole));
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}
