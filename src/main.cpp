#include "app/MainMenuWindow.h"
#include "app/ProgramState.h"
#include "app/QtIdentity.h"
#include "app/Startup.h"
#include "core/QtPrompter.h"
#include "processor/HttpProcessorClient.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

namespace {

struct Options
{
    QString folder;
    QString settingsFile;
    int processorTimeout = 0;
};

// Reads the command line; exits with usage on an error, and after printing
// the usage or the version.
Options parseCommandLine(const QCoreApplication &app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Remitra: rent collection and owner and vendor payments for Dwellix through the Quenta "
        "payment processor."_qs);
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption folderOption(u"folder"_qs,
        u"The program's folder (where dxdatafl.db or dxdatafl.mdb, IDFILE.DAT and the transfer "
        "files are). Default: the folder of this program."_qs,
        u"DIR"_qs);
    const QCommandLineOption settingsOption(u"settings"_qs,
        u"Keep the processor credentials in this INI file instead of the user's settings "
        "store."_qs,
        u"FILE"_qs);
    const QCommandLineOption timeoutOption(u"processor-timeout"_qs,
        u"Seconds a processor call may take before it counts as unanswered (default 120)."_qs,
        u"SECONDS"_qs);
    parser.addOption(folderOption);
    parser.addOption(settingsOption);
    parser.addOption(timeoutOption);
    parser.process(app);

    Options options;
    // Absolute, as it becomes the current directory and files are named
    // from it afterwards.
    options.folder = QFileInfo(parser.isSet(folderOption) ? parser.value(folderOption)
                                                          : QCoreApplication::applicationDirPath())
                         .absoluteFilePath();
    if (!QFileInfo(options.folder).isDir()) {
        std::fprintf(stderr, "remitra: the folder %s does not exist\n",
            qPrintable(QDir::toNativeSeparators(options.folder)));
        std::exit(2);
    }
    if (parser.isSet(settingsOption))
        options.settingsFile = QFileInfo(parser.value(settingsOption)).absoluteFilePath();
    if (parser.isSet(timeoutOption)) {
        bool ok = false;
        options.processorTimeout = parser.value(timeoutOption).toInt(&ok);
        if (!ok || options.processorTimeout <= 0) {
            std::fprintf(
                stderr, "remitra: --processor-timeout takes a positive number of seconds\n");
            std::exit(2);
        }
    }
    return options;
}

// --help and --version print and end; they need no display.
bool printsOnly(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray arg(argv[i]);
        if (arg == "--help" || arg == "-h" || arg == "--help-all" || arg == "--version"
            || arg == "-v")
            return true;
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    if (printsOnly(argc, argv)) {
        QCoreApplication app(argc, argv);
        QtIdentity::applyNames(app);
        parseCommandLine(app);
        return 0;
    }
    QApplication app(argc, argv);
    QtIdentity::apply(app);

    const Options options = parseCommandLine(app);
    // Everything the program reads and writes lies in its folder.
    QDir::setCurrent(options.folder);

    QtPrompter prompter;
    ProgramState state(prompter, options.folder);
    state.settingsFile = options.settingsFile;
    if (options.processorTimeout > 0)
        state.processorTimeoutSeconds = options.processorTimeout;
    // The processor client of every job: HTTP, waiting --processor-timeout seconds.
    state.clientFactory
        = [&state] { return std::make_unique<HttpProcessorClient>(state.processorTimeoutSeconds); };
    state.endProgram = [] { QCoreApplication::exit(1); };

    MainMenuWindow mainMenu(state);
    prompter.setParent(&mainMenu);
    if (!mainMenu.load() || state.endRequested)
        return 1;
    mainMenu.show();
    const int code = app.exec();
    return state.endRequested ? 1 : code;
}
