#include "question.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

bool confirmed(QWidget* window, const QString& question, const QString& consequence) {
    QMessageBox box(QMessageBox::Question, QStringLiteral("Quorvale"), question,
                    QMessageBox::NoButton, window);
    box.setObjectName(QStringLiteral("question"));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(consequence);
    // The box shows this one as it thinks fit, whatever its format.
    box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"))
        ->setTextFormat(Qt::PlainText);
    const auto* yes = box.addButton(QStringLiteral("Oui"), QMessageBox::YesRole);
    auto* no = box.addButton(QStringLiteral("Non"), QMessageBox::NoRole);
    box.setDefaultButton(no);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes;
}
