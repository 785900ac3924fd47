// The last distribution viewer's reading of the last-upload file.
#include "FuzzSite.h"

#include "core/RuntimeError.h"
#include "disburse/LastBatch.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzSite &site = FuzzSite::get();
    site.writeFile(u"DX_Quenta_Distribution_LastUpload.txt"_qs, data, size);
    try {
        const QList<QStringList> rows = LastBatch::load(site.state());
        for (const QStringList &row : rows)
            if (row.size() != 4)
                __builtin_trap();
    } catch (const RuntimeError &) {
    }
    site.prompter().clear();
    return 0;
}
