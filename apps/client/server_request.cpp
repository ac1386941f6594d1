#include "server_request.h"

#include <QProcess>
#include <QRegularExpression>

#include "background_command.h"

namespace {

/// The name in a server's answer; null when the answer is no name, but a page for instance.
QString name_in(const QByteArray& answer) {
    const int longest = 200;
    if (answer.size() > longest || answer.contains('<') || answer.trimmed().contains('\n')) {
        return {};
    }
    const QString name = QString::fromLatin1(answer).simplified();
    return name.isNull() ? QStringLiteral("") : name;
}

}  // namespace

QString server_address(const QString& typed) {
    static const QRegularExpression form(
        QStringLiteral(R"(^(?:http://)?([a-z0-9](?:[a-z0-9.-]*[a-z0-9])?)(?::(\d{1,5}))?/?$)"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression numbers(QStringLiteral(R"(^[\d.]+$)"));
    static const QRegularExpression ipv4(
        QStringLiteral(R"(^((25[0-5]|2[0-4]\d|1?\d?\d)(\.(?!$)|$)){4}$)"));
    const QRegularExpressionMatch match = form.match(typed.trimmed());
    if (!match.hasMatch()) {
        return {};
    }
    const QString host = match.captured(1);
    if (numbers.match(host).hasMatch() && !ipv4.match(host).hasMatch()) {
        return {};
    }
    const int port = match.captured(2).isEmpty() ? 8000 : match.captured(2).toInt();
    if (port < 1 || port > 65535) {
        return {};
    }
    return QStringLiteral("%1:%2").arg(host).arg(port);
}

void ask_server(QObject& owner, const QString& address,
                const std::function<void(const QString& name)>& told) {
    auto* curl = new QProcess(&owner);
    QObject::connect(curl, &QProcess::errorOccurred, &owner, [=](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            curl->deleteLater();
            told({});
        }
    });
    QObject::connect(curl, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &owner,
                     [=](int status, QProcess::ExitStatus how) {
                         curl->deleteLater();
                         const bool answered = how == QProcess::NormalExit && status == 0;
                         told(answered ? name_in(curl->readAllStandardOutput()) : QString());
                     });
    end_with_owner(*curl, owner);
    // The limits are those of the curl on PATH.
    curl->start(QStringLiteral("curl"), {QStringLiteral("--silent"), QStringLiteral("--fail"),
                                         QStringLiteral("http://%1/_infos/kl/").arg(address)});
}
