// IDFILE.DAT, written by the host application: the account settings items.
#include "FuzzSite.h"

#include "app/IdFile.h"
#include "core/RuntimeError.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzSite &site = FuzzSite::get();
    site.writeFile(u"IDFILE.DAT"_qs, data, size);
    try {
        loadIdFile(site.state().folder(), site.state().account);
    } catch (const RuntimeError &) {
    }
    site.prompter().clear();
    return 0;
}
