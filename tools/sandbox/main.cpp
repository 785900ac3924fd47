// quenta-sandbox: a processor simulator for the demo and the end-to-end
// tests. Listens on loopback only and prints the upload URL to give Remitra.

#include "SandboxServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"quenta-sandbox"_qs);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Simulated Quenta Payment Services processor on a loopback address."_qs);
    parser.addHelpOption();
    const QCommandLineOption portOption(
        u"port"_qs, u"Port to listen on (0: any free port)."_qs, u"P"_qs, u"0"_qs);
    const QCommandLineOption userOption(
        u"user"_qs, u"User name the processor accepts."_qs, u"U"_qs);
    const QCommandLineOption passwordOption(
        u"password"_qs, u"Password the processor accepts."_qs, u"W"_qs);
    const QCommandLineOption stateOption(
        u"state"_qs, u"Keep the records in this file across restarts."_qs, u"FILE"_qs);
    const QCommandLineOption hostOption(
        u"host"_qs, u"Loopback address to bind."_qs, u"ADDRESS"_qs, u"127.0.0.1"_qs);
    const QCommandLineOption limitOption(
        u"payment-limit"_qs, u"Reject distribution payments above this amount."_qs, u"AMOUNT"_qs);
    const QCommandLineOption limitCodeOption(u"limit-code"_qs,
        u"Result code for a payment above the limit (default 7)."_qs, u"CODE"_qs, u"7"_qs);
    const QCommandLineOption autoRentOption(u"auto-rent"_qs,
        u"Demo mode: each tenant upload queues a rent payment from every active tenant."_qs);
    parser.addOptions({ portOption, userOption, passwordOption, stateOption, hostOption,
        limitOption, limitCodeOption, autoRentOption });
    parser.process(app);

    auto fail = [](const QString &text) {
        std::fprintf(stderr, "quenta-sandbox: %s\n", qPrintable(text));
        return 2;
    };
    if (!parser.isSet(userOption) || !parser.isSet(passwordOption))
        return fail(u"--user and --password are required"_qs);
    bool portOk = false;
    const uint port = parser.value(portOption).toUInt(&portOk);
    if (!portOk || port > 65535)
        return fail(u"--port needs a number from 0 to 65535"_qs);

    SandboxServer::Options options;
    options.user = parser.value(userOption);
    options.password = parser.value(passwordOption);
    options.stateFile = parser.value(stateOption);
    options.port = quint16(port);
    options.autoRent = parser.isSet(autoRentOption);
    QString host = parser.value(hostOption);
    if (host == u"localhost"_qs)
        host = u"127.0.0.1"_qs;
    options.host = QHostAddress(host);

    SandboxRecords records;
    if (parser.isSet(limitOption)) {
        records.paymentLimit = Currency::parse(parser.value(limitOption));
        if (!records.paymentLimit)
            return fail(u"--payment-limit needs an amount"_qs);
    }
    records.limitCode = parser.value(limitCodeOption).toInt();
    QString error;
    if (!options.stateFile.isEmpty()
        && !SandboxServer::loadRecords(options.stateFile, records, &error))
        return fail(error);

    SandboxServer server(options, std::move(records));
    if (!server.start(&error))
        return fail(error);

    // The first line is the URL to enter in Remitra; tools read it from here.
    std::printf("%s/qps/upload.php\n", qPrintable(server.baseUrl()));
    std::printf("payee URL: %s/qps/evendorpay.php\n", qPrintable(server.baseUrl()));
    std::printf("control: %s/control/{ping,queue-rent,queue-lines,next,received,records,clear}\n",
        qPrintable(server.baseUrl()));
    std::fflush(stdout);
    return app.exec();
}
