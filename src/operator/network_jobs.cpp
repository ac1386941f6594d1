#include "network_jobs.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QProgressDialog>
#include <QUrl>

#include "background_command.h"
#include "open_url.h"
#include "question.h"

namespace {

const QString copies_filter = QStringLiteral("Copies de réseaux (*.quorvale)");

QString directory_of(const RegisteredNetwork& network) {
    return QFile::decodeName(network.directory.c_str());
}

QString quoted(const RegisteredNetwork& network) {
    return QStringLiteral("« %1 »").arg(network.name);
}

/// Asks for a file with a dialog of that object name. Returns its path, or an empty text.
QString ask_file(QFileDialog& dialog, const char* name) {
    dialog.setObjectName(QLatin1String(name));
    dialog.setNameFilter(copies_filter);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

}  // namespace

NetworkJobs::NetworkJobs(QWidget& shown) : QObject(&shown), window(shown) {}

void NetworkJobs::open_folder(const RegisteredNetwork& network) {
    const QString package = package_of(network.directory);
    const QString folder = package + QStringLiteral("/ressources");
    if (package.isEmpty() || !QFileInfo(folder).isDir()) {
        say(false,
            QStringLiteral("Le dossier des fichiers de %1 n'existe plus.").arg(quoted(network)));
        return;
    }
    open_url(QUrl::fromLocalFile(folder).toString(QUrl::FullyEncoded));
}

void NetworkJobs::rename(const RegisteredNetwork& network) {
    QInputDialog dialog(&window);
    dialog.setObjectName(QStringLiteral("rename_dialog"));
    dialog.setWindowTitle(QStringLiteral("Renommer le réseau"));
    // As rich text, where nothing of a name is taken for a tag or a mnemonic.
    dialog.setLabelText(
        QStringLiteral("<span>Nouveau nom de %1 :</span>").arg(quoted(network).toHtmlEscaped()));
    dialog.setTextValue(network.name);
    dialog.setOkButtonText(QStringLiteral("Renommer"));
    dialog.setCancelButtonText(QStringLiteral("Annuler"));
    if (dialog.exec() != QDialog::Accepted || dialog.textValue().simplified() == network.name) {
        return;
    }
    run({QStringLiteral("rename"), QStringLiteral("--"), directory_of(network),
         dialog.textValue().simplified()},
        QStringLiteral("Changement du nom…"));
}

void NetworkJobs::copy(const RegisteredNetwork& network) {
    QFileDialog dialog(&window, QStringLiteral("Copier %1 vers…").arg(quoted(network)),
                       QDir::homePath());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // The program overwrites no file, so the dialog must not offer it.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setDefaultSuffix(QStringLiteral("quorvale"));
    QString name = network.name;
    dialog.selectFile(name.replace(QLatin1Char('/'), QLatin1Char('-')) + QLatin1Char(' ') +
                      QDate::currentDate().toString(Qt::ISODate) + QStringLiteral(".quorvale"));
    const QString file = ask_file(dialog, "copy_dialog");
    if (!file.isEmpty()) {
        run({QStringLiteral("copy"), QStringLiteral("--"), directory_of(network), file},
            QStringLiteral("Copie en cours…"));
    }
}

void NetworkJobs::remove(const RegisteredNetwork& network) {
    if (confirmed(&window, QStringLiteral("Supprimer le réseau %1 ?").arg(quoted(network)),
                  QStringLiteral("Son répertoire, avec ses fichiers et ses comptes, est mis à la "
                                 "corbeille."))) {
        run({QStringLiteral("remove"), QStringLiteral("--"), directory_of(network)},
            QStringLiteral("Suppression en cours…"));
    }
}

void NetworkJobs::restore() {
    QFileDialog dialog(&window, QStringLiteral("Restaurer une copie"), QDir::homePath());
    dialog.setFileMode(QFileDialog::ExistingFile);
    const QString file = ask_file(dialog, "restore_dialog");
    if (!file.isEmpty()) {
        run({QStringLiteral("restore"), QStringLiteral("--"), file},
            QStringLiteral("Restauration en cours…"));
    }
}

void NetworkJobs::run(const QStringList& arguments, const QString& doing) {
    auto* progress =
        new QProgressDialog(doing, QStringLiteral("Annuler"), 0, 0, &window);  // owns the command
    progress->setObjectName(QStringLiteral("job_progress"));
    progress->setWindowTitle(doing);
    progress->setMinimumWidth(360);  // for a whole title
    progress->setWindowModality(Qt::WindowModal);
    progress->show();  // at once: nothing else may be started in the window meanwhile
    // A program that is ended halfway undoes what it has done.
    connect(progress, &QProgressDialog::canceled, progress, &QObject::deleteLater);
    run_in_background(*progress, QStringList(program_path("quorvale-network")) + arguments,
                      QDir::currentPath(), {}, [this, progress](int status, const QString& said) {
                          progress->reset();  // hides it
                          progress->deleteLater();
                          say(status == 0, said);
                          if (status == 0) {
                              emit done();
                          }
                      });
}

void NetworkJobs::say(bool succeeded, const QString& text) {
    QMessageBox message(succeeded ? QMessageBox::Information : QMessageBox::Warning,
                        QStringLiteral("Quorvale"), text, QMessageBox::Ok, &window);
    message.setObjectName(QStringLiteral("job_outcome"));
    message.setTextFormat(Qt::PlainText);
    message.exec();
}
