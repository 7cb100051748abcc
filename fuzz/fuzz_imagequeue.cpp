// Arbitrary bytes as an image-queue file: reopening must refuse or accept
// cleanly, and every read must stay inside the file and the buffer.
#include "czoimagequeue.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("queue.bin"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return 0;
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    // The pixel type is not in the file; let the first byte pick it.
    const ZOSDataTypes type = ZOSDataTypes(size > 0 ? data[0] % 6 : 2);

    CZOImageQueue queue;
    if (queue.initFromFile(path, type)) {
        const quint64 frameSize = queue.frameSizeInBytes();
        // An accepted header promises its frames are in the file.
        if (frameSize == 0 || frameSize * queue.getNumberOfFrames() + 80 > size)
            __builtin_trap();
        std::vector<char> buffer(frameSize);
        const quint64 count = queue.getNumberOfFrames();
        for (quint64 i = 0; i <= count + 1 && i < 64; ++i) {
            // Every held frame, and the count itself, reads; past the count nothing does.
            const bool read = queue.getFrameAt(i, buffer.data());
            if ((count > 0 && i <= count && !read) || (i > count && read))
                __builtin_trap();
        }
    } else {
        char buffer[16];
        if (queue.getFrameAt(0, buffer) || queue.getNumberOfFrames() != 0)
            __builtin_trap();
        QFile::remove(path);
    }
    return 0;
}
