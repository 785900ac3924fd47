#include "FuzzSite.h"
#include "RentSupport.h"

#include <QApplication>

namespace {

int g_argc = 1;
char g_name[] = "remitra-fuzz";
char *g_argv[] = { g_name, nullptr };

} // namespace

FuzzSite &FuzzSite::get(bool widgets)
{
    static FuzzSite *site = new FuzzSite(widgets); // lives as long as the process
    return *site;
}

FuzzSite::FuzzSite(bool widgets)
{
    if (widgets) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QApplication(g_argc, g_argv);
    } else {
        new QCoreApplication(g_argc, g_argv);
    }
    m_site = std::make_unique<TestSite>();
    RentSupport::seedPortfolio(*m_site);
    // An untrapped error ends the program; here it only ends one input.
    m_site->state->endProgram = [] {};
}

void FuzzSite::writeFile(const QString &name, const uint8_t *data, size_t size)
{
    m_site->writeFile(name, QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
}
