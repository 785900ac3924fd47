#include "DemoSite.h"

#include "core/RuntimeError.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

namespace {

int usage()
{
    std::fprintf(stderr,
        "usage: remitra-demo-site DIR [--tenants N]\n"
        "       remitra-demo-site --write-settings INI URL USER PASSWORD\n");
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments().mid(1);
    try {
        if (!args.isEmpty() && args[0] == u"--write-settings"_qs) {
            if (args.size() != 5)
                return usage();
            DemoSite::writeSettings(args[1], args[2], args[3], args[4]);
            return 0;
        }
        QString folder;
        int tenants = DemoSite::DefaultTenants;
        for (int i = 0; i < args.size(); ++i) {
            if (args[i] == u"--tenants"_qs && i + 1 < args.size()) {
                bool ok = false;
                tenants = args[++i].toInt(&ok);
                if (!ok || tenants < 1)
                    return usage();
            } else if (!args[i].startsWith(u"--"_qs) && folder.isEmpty()) {
                folder = args[i];
            } else {
                return usage();
            }
        }
        if (folder.isEmpty())
            return usage();
        QElapsedTimer timer;
        timer.start();
        const DemoSite::Counts c = DemoSite::writeSite(folder, tenants);
        std::printf("%s: %d owners, %d properties, %d tenants and units, %d vendors, %d entered "
                    "checks with %d split lines (%lld ms)\n",
            qPrintable(folder), c.owners, c.properties, c.tenants, c.vendors, c.checks, c.splits,
            static_cast<long long>(timer.elapsed()));
        return 0;
    } catch (const RuntimeError &error) {
        std::fprintf(stderr, "remitra-demo-site: %s\n", qPrintable(error.description()));
        return 1;
    }
}
