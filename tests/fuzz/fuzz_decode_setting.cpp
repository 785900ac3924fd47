// The stored form of the credentials: decoding what the settings store holds,
// and encoding it back.
#include "FuzzSite.h"

#include "app/Credentials.h"
#include "core/RuntimeError.h"
#include "core/TransferFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const QString &stored : { TransferFile::fromAnsi(bytes), QString::fromUtf8(bytes) }) {
        QString plain;
        try {
            plain = decodeSetting(stored);
        } catch (const RuntimeError &) {
            continue;
        }
        // What decodes must encode back to the same stored text, as far as
        // the text is ANSI at all.
        if (TransferFile::fromAnsi(TransferFile::toAnsi(stored)) != stored)
            continue;
        QString again;
        try {
            again = encodeSetting(plain);
        } catch (const RuntimeError &) {
            __builtin_trap();
        }
        if (again != stored)
            __builtin_trap();
    }
    return 0;
}
