// Arbitrary texts through the date-time stamp reader and the path shortener.
#include "generalutilities.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    getDateTime(text);
    QString path = text;
    shortenFolderNameForDisplay(path);
    QString number = text;
    adjustExpValue(number);
    return 0;
}
