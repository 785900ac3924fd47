// The transfer file viewer: reading a chosen file and splitting it into the
// list's lines.
#include "FuzzSite.h"

#include "core/RuntimeError.h"
#include "viewer/TransferFileViewer.h"

#include <QListWidget>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzSite &site = FuzzSite::get(true);
    static TransferFileViewer *viewer = new TransferFileViewer(site.state(), nullptr);
    static const QStringList names = viewer->fileNames();
    const int choice = size > 0 ? data[0] % names.size() : 0;
    site.writeFile(names.at(choice), data, size);
    viewer->chooseFile(choice);
    auto *list = viewer->findChild<QListWidget *>(u"lstFileContents"_qs);
    if (!list)
        __builtin_trap();
    site.prompter().clear();
    return 0;
}
