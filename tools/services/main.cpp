#include "ServiceSet.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTextStream>

#include <unistd.h>

namespace {

QString helpText()
{
    QString text = QStringLiteral(
        "Stand-ins for every outside service Zorvane calls on, served on 127.0.0.1 and speaking the same\n"
        "wire formats. With no options each service listens on the port the application uses by default,\n"
        "so a fresh build of Zorvane works with them unchanged.\n\nServices:\n");
    for (int i = 0; i < ServiceSet::Count; ++i) {
        const auto id = static_cast<ServiceSet::Id>(i);
        text += QStringLiteral("  %1 %2 %3\n")
                    .arg(ServiceSet::name(id), -10)
                    .arg(ServiceSet::defaultPort(id), -5)
                    .arg(ServiceSet::describe(id));
    }
    text += QStringLiteral(
        "\nFault switches (--fault SERVICE:SWITCH, repeatable):\n"
        "  delay=MS     every answer waits MS milliseconds (gateway: the event lines and the server list)\n"
        "  refuse       the port does not listen\n"
        "  close        the connection ends halfway through the first answer (gateway and ifly: after the\n"
        "               first result)\n"
        "  error=CODE   the service's own error form: backend code, translation error_code, token error,\n"
        "               synthesis err_no, lookup code, gateway ON_ERROR after the parameters (-3001 makes\n"
        "               the client start again), ifly code on the first frame\n"
        "  status=CODE  HTTP services: this HTTP status with an empty body\n"
        "  malformed    answers cut in half (gateway: result lines and the server list)\n"
        "  off          clears the switches set before it\n"
        "While running, a line \"fault SERVICE:SWITCH\" on standard input sets a switch the same way;\n"
        "the answer is \"fault SERVICE: SWITCHES\" (or \"error: REASON\").\n"
        "\nRecognition: the scripted engine hears one script sentence per stretch of speech (partials grow\n"
        "every 200 ms, a '|' in a line writes the stages out, which is how revisions are scripted; 600 ms "
        "of\n"
        "quiet or the end of the audio closes the sentence). The sphinx engine recognises English offline\n"
        "when the build found pocketsphinx.\n");
    return text;
}

}  // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zorvane-services"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(helpText());
    parser.addHelpOption();
    const QCommandLineOption portOption(QStringLiteral("port"),
                                        QStringLiteral("Serve SERVICE on PORT (0: a free port). Repeatable."),
                                        QStringLiteral("SERVICE=PORT"));
    const QCommandLineOption freeOption(QStringLiteral("free-ports"),
                                        QStringLiteral("Serve every service on a free port."));
    const QCommandLineOption faultOption(QStringLiteral("fault"),
                                         QStringLiteral("Switch a fault on for SERVICE. Repeatable."),
                                         QStringLiteral("SERVICE:SWITCH"));
    const QCommandLineOption engineOption(QStringLiteral("engine"),
                                          QStringLiteral("Recognition engine: scripted or sphinx."),
                                          QStringLiteral("NAME"), QStringLiteral("scripted"));
    const QCommandLineOption scriptOption(QStringLiteral("script"),
                                          QStringLiteral("Sentences for the scripted engine, one per line."),
                                          QStringLiteral("FILE"));
    const QCommandLineOption countsOption(
        QStringLiteral("gateway-counts"),
        QStringLiteral("One SDK port per count, as the server list tells them."), QStringLiteral("N,N,..."),
        QStringLiteral("3,1,2"));
    const QCommandLineOption paramsOption(
        QStringLiteral("gateway-params"),
        QStringLiteral("How each SDK port answers the parameters: accept, refuse or silent."),
        QStringLiteral("A,A,..."));
    const QCommandLineOption uploadOption(
        QStringLiteral("upload-log"), QStringLiteral("Also append every upload to FILE, one JSON line each."),
        QStringLiteral("FILE"));
    const QCommandLineOption versionOption(QStringLiteral("app-version"),
                                           QStringLiteral("The application version the backend offers."),
                                           QStringLiteral("VERSION"));
    const QCommandLineOption installerOption(QStringLiteral("installer-kib"),
                                             QStringLiteral("Size of the installer download."),
                                             QStringLiteral("KIB"), QStringLiteral("512"));
    const QCommandLineOption configOption(QStringLiteral("print-config"),
                                          QStringLiteral("Print the application's configuration even on the "
                                                         "default ports."));
    parser.addOptions({portOption, freeOption, faultOption, engineOption, scriptOption, countsOption,
                       paramsOption, uploadOption, versionOption, installerOption, configOption});
    parser.process(app);

    ServiceSet services;
    auto fail = [&err](const QString& message) {
        err << "zorvane-services: " << message << Qt::endl;
        return 2;
    };
    if (parser.isSet(freeOption)) {
        services.setAllPortsFree();
    }
    for (const QString& option : parser.values(portOption)) {
        ServiceSet::Id id;
        bool ok = false;
        const int port = option.section(QLatin1Char('='), 1).toInt(&ok);
        if (!ServiceSet::idFromName(option.section(QLatin1Char('='), 0, 0), &id) || !ok || port < 0 ||
            port > 65535) {
            return fail(QStringLiteral("--port takes SERVICE=PORT: %1").arg(option));
        }
        services.setPort(id, static_cast<quint16>(port));
    }
    for (const QString& option : parser.values(faultOption)) {
        ServiceSet::Id id;
        QString error;
        if (!ServiceSet::idFromName(option.section(QLatin1Char(':'), 0, 0), &id)) {
            return fail(QStringLiteral("--fault takes SERVICE:SWITCH: %1").arg(option));
        }
        if (!services.fault(id).apply(option.section(QLatin1Char(':'), 1), &error)) {
            return fail(error);
        }
    }
    QString error;
    if (!services.engines().setEngine(parser.value(engineOption), &error)) {
        return fail(error);
    }
    if (parser.isSet(scriptOption)) {
        QFile file(parser.value(scriptOption));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            return fail(QStringLiteral("cannot read %1").arg(file.fileName()));
        }
        services.engines().setScript(
            QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts));
    }
    QList<int> counts;
    if (!GatewayService::parseCounts(parser.value(countsOption), &counts, &error)) {
        return fail(error);
    }
    services.gateway().setCounts(counts);
    QList<GatewaySession::ParamsAnswer> answers;
    if (!GatewayService::parseParamsAnswers(parser.value(paramsOption), &answers, &error)) {
        return fail(error);
    }
    services.gateway().setParamsAnswers(answers);
    if (parser.isSet(uploadOption)) {
        services.uploads().setFile(parser.value(uploadOption));
    }
    if (parser.isSet(versionOption)) {
        services.setAppVersion(parser.value(versionOption));
    }
    bool kibOk = false;
    const int kib = parser.value(installerOption).toInt(&kibOk);
    if (!kibOk || kib <= 0) {
        return fail(
            QStringLiteral("--installer-kib takes a size above 0: %1").arg(parser.value(installerOption)));
    }
    services.setInstallerKib(kib);

    if (!services.start(&error)) {
        return fail(error);
    }
    for (int i = 0; i < ServiceSet::Count; ++i) {
        const auto id = static_cast<ServiceSet::Id>(i);
        const Fault& fault = services.fault(id);
        out << ServiceSet::name(id) << " on 127.0.0.1:" << services.port(id)
            << " faults: " << fault.describe() << '\n';
    }
    out << "gateway SDK ports:";
    const QList<quint16> sdk = services.gateway().sdkPorts();
    for (int i = 0; i < sdk.size(); ++i) {
        out << ' ' << sdk.at(i) << " (count " << counts.value(i) << ')';
    }
    out << "\nengine: " << services.engines().engine() << '\n';
    if (!services.usesDefaultPorts() || parser.isSet(configOption)) {
        out << '\n' << services.configSnippet();
    }
    out << "ready" << Qt::endl;

    // Faults switched while running, for tests that need a service to fail only for a while.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[512];
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0) {
            input.setEnabled(false);  // no more commands; the services go on
            return;
        }
        pending.append(buffer, static_cast<int>(got));
        for (int end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            const QString line = QString::fromUtf8(pending.left(end)).trimmed();
            pending.remove(0, end + 1);
            const QString spec = line.section(QLatin1Char(' '), 1);
            ServiceSet::Id id;
            QString error;
            if (!line.startsWith(QLatin1String("fault ")) ||
                !ServiceSet::idFromName(spec.section(QLatin1Char(':'), 0, 0), &id)) {
                out << "error: expected fault SERVICE:SWITCH, got " << line << Qt::endl;
            } else if (!services.applyFault(id, spec.section(QLatin1Char(':'), 1), &error)) {
                out << "error: " << error << Qt::endl;
            } else {
                out << "fault " << ServiceSet::name(id) << ": " << services.fault(id).describe() << Qt::endl;
            }
        }
    });
    return QCoreApplication::exec();
}
