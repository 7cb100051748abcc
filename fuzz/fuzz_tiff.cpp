// Arbitrary bytes as a TIFF file through CILImage::loadTiff.
#include "cilimage.h"

#include <QDir>
#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QString path = QDir::tempPath() + QStringLiteral("/fuzz_tiff-%1.tif").arg(getpid());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();
    CILImage image;
    if (image.loadTiff(path) == ES_SUCCESS)
        image.RefreshImageStats();
    return 0;
}
