#include "czoimagequeue.h"

#include "czosavefile.h"
#include "generalutilities.h"

#include <QFile>
#include <QtEndian>

#include <cstring>
#include <limits>

namespace {

constexpr quint64 kMaxFileOffset = quint64(std::numeric_limits<qint64>::max());

// a * b, or false when it passes `limit`.
bool multiplyWithin(quint64 a, quint64 b, quint64 limit, quint64 &product)
{
    if (b != 0 && a > limit / b)
        return false;
    product = a * b;
    return product <= limit;
}

// Bytes of one frame, or 0 when the type is unknown, a side is not positive or
// the size does not fit a file offset.
quint64 frameBytes(ZOSDataTypes type, int width, int height)
{
    const int pixelBytes = sizeInBytes(type);
    if (pixelBytes <= 0 || width <= 0 || height <= 0)
        return 0;
    quint64 pixels = 0;
    quint64 bytes = 0;
    if (!multiplyWithin(quint64(width), quint64(height), kMaxFileOffset, pixels)
        || !multiplyWithin(pixels, quint64(pixelBytes), kMaxFileOffset, bytes))
        return 0;
    return bytes;
}

// 80 + slotCount * frame size, or 0 when that passes the largest file offset.
quint64 endOfSlots(quint64 slotCount, quint64 frameSize)
{
    quint64 bytes = 0;
    if (!multiplyWithin(slotCount, frameSize, kMaxFileOffset - CZOImageQueue::HeaderSize, bytes))
        return 0;
    return bytes + CZOImageQueue::HeaderSize;
}

} // namespace

CZOImageQueue::CZOImageQueue()
{
    clear();
}

CZOImageQueue::CZOImageQueue(QString path, quint64 capacity, int width, int height, ZOSDataTypes type)
{
    clear();
    initImageQueue(path, capacity, width, height, type, true);
}

CZOImageQueue::~CZOImageQueue()
{
    closeFilesLocked();
    if (!m_strPath.isEmpty())
        QFile::remove(m_strPath);
}

void CZOImageQueue::clear()
{
    m_eType = ZOS_DT_UNKNOWN;
    m_nCapacity = 0;
    m_nHeight = 0;
    m_nWidth = 0;
    m_nFramesAdded = 0;
    m_nDataStart = 0;
    m_nWritePos = 0;
    m_nRingStart = 0;
    m_nOldestSlot = 0;
    m_nRingSlots = 0;
    m_bInProcess = false;
    std::memset(m_header, 0, sizeof m_header);
}

void CZOImageQueue::closeFilesLocked()
{
    delete m_pWriter; // QFile closes itself
    m_pWriter = nullptr;
    delete m_pReader;
    m_pReader = nullptr;
}

quint64 CZOImageQueue::frameSizeInBytes() const
{
    return frameBytes(m_eType, m_nWidth, m_nHeight);
}

void CZOImageQueue::fillHeader(quint64 count, quint64 ringStart, quint32 a, quint32 b, quint32 slotInWork)
{
    const quint32 words[9] = {quint32(count),
                              quint32(m_nCapacity),
                              quint32(m_nHeight),
                              quint32(m_nWidth),
                              quint32(ringStart),
                              quint32(HeaderSize),
                              a,
                              b,
                              slotInWork};
    std::memset(m_header, 0, sizeof m_header);
    for (int i = 0; i < 9; ++i)
        qToLittleEndian(words[i], m_header + 4 * i);
}

void CZOImageQueue::setReadOrder()
{
    // With n frames held and ring start s (at most n), logical index i lives in
    // slot (n - s + i) mod n: for a ring that wrapped, n is the capacity and
    // the oldest frame is in slot n - s; otherwise s is n and the oldest is slot 0.
    m_nRingSlots = m_nFramesAdded;
    m_nOldestSlot = m_nFramesAdded == 0 ? 0 : (m_nFramesAdded - m_nRingStart) % m_nFramesAdded;
}

bool CZOImageQueue::writeHeaderLocked()
{
    return m_pWriter->seek(0)
        && m_pWriter->write(reinterpret_cast<const char *>(m_header), HeaderSize) == HeaderSize;
}

quint32 CZOImageQueue::headerWord(int offset) const
{
    return qFromLittleEndian<quint32>(m_header + offset);
}

void CZOImageQueue::initImageQueue(QString path, quint64 capacity, int width, int height, ZOSDataTypes type,
                                   bool deleteOld)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    closeFilesLocked();
    if (deleteOld && !m_strPath.isEmpty())
        QFile::remove(m_strPath);
    clear();
    m_strPath.clear();

    // The header keeps the capacity in 32 bits; a larger one could not be reopened.
    const quint64 frameSize = frameBytes(type, width, height);
    if (capacity == 0 || capacity > std::numeric_limits<quint32>::max() || frameSize == 0
        || endOfSlots(capacity, frameSize) == 0)
        return;
    m_strPath = path;

    m_eType = type;
    m_nCapacity = capacity;
    m_nWidth = width;
    m_nHeight = height;
    m_nFramesAdded = 0;
    m_nRingStart = 0;
    fillHeader(0, 0, 1, 0, 0);
    // The first header goes to a staging file, opened for the frames to come,
    // which then replaces whatever `path` held in one rename: a failure leaves
    // that file as it was. Frames are megabytes each: Qt's buffer would only add a copy.
    const QString target = CZOSaveFile::resolvedTarget(path);
    CZOSaveFile::removeStaleStagingFiles(target);
    m_pWriter = new QFile(CZOSaveFile::newStagingPath(target));
    if (!m_pWriter->open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered)
        || !writeHeaderLocked() || !CZOSaveFile::replace(m_pWriter->fileName(), target, nullptr)) {
        m_pWriter->remove();
        closeFilesLocked();
        clear();
        m_strPath.clear();
        return;
    }
    m_nDataStart = HeaderSize;
    m_nWritePos = HeaderSize;
    m_bInProcess = true;
}

bool CZOImageQueue::addFrame(const char *data)
{
    if (!m_bInProcess || !data)
        return false;

    std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 frameSize = qint64(frameSizeInBytes());
    const quint64 held = qMin(m_nFramesAdded, m_nCapacity);
    // The header on disk only ever counts complete frames, so that initFromFile()
    // reads them all if the producer dies: a frame is counted once written, and
    // once the ring is full the slot about to be overwritten is first marked as
    // in work, since its oldest frame will not be whole until then.
    if (m_nFramesAdded >= m_nCapacity) {
        const quint64 slot = (m_nWritePos - m_nDataStart) / quint64(frameSize);
        fillHeader(held, m_nRingStart, 1, 0, quint32(slot + 1));
        if (!writeHeaderLocked())
            return false;
    }
    if (!m_pWriter->seek(qint64(m_nWritePos)) || m_pWriter->write(data, frameSize) != frameSize)
        return false; // a retry writes the same slot again

    const quint64 added = m_nFramesAdded + 1;
    const quint64 r = added % m_nCapacity;
    const quint64 ringStart = added < m_nCapacity ? added : m_nCapacity - r;
    fillHeader(qMin(added, m_nCapacity), ringStart, 1, 0, 0);
    if (!writeHeaderLocked())
        return false;
    m_nRingStart = ringStart;
    m_nWritePos = r == 0 ? m_nDataStart : m_nWritePos + quint64(frameSize);
    ++m_nFramesAdded;
    return true;
}

void CZOImageQueue::finalizeImageQueue(int a, int b)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_nFramesAdded = qMin(m_nFramesAdded, m_nCapacity);
    setReadOrder();
    if (!m_pWriter) {
        m_bInProcess = false;
        return;
    }
    fillHeader(m_nFramesAdded, m_nRingStart, quint32(a), quint32(b), 0);
    if (m_pWriter->isOpen()) {
        writeHeaderLocked();
        m_pWriter->close();
    }
    m_bInProcess = false;
}

bool CZOImageQueue::initFromFile(QString path, ZOSDataTypes type)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    closeFilesLocked();
    clear();
    m_strPath.clear(); // only a file accepted as a queue becomes ours to delete

    QFile *reader = new QFile(path);
    if (!reader->open(QIODevice::ReadOnly | QIODevice::Unbuffered)
        || reader->read(reinterpret_cast<char *>(m_header), HeaderSize) != HeaderSize) {
        delete reader;
        std::memset(m_header, 0, sizeof m_header);
        return false;
    }

    const quint64 count = headerWord(0);
    const quint64 capacity = headerWord(4);
    const qint32 height = qint32(headerWord(8));
    const qint32 width = qint32(headerWord(12));
    const quint64 ringStart = headerWord(16);
    const quint64 dataStart = headerWord(20);
    const quint64 slotInWork = headerWord(32); // slot + 1; 0 in every finalised file

    // A file this queue wrote satisfies all of these; anything else would let a
    // read leave the frames that are actually there.
    const quint64 frameSize = frameBytes(type, width, height);
    const quint64 framesEnd = endOfSlots(count, frameSize);
    const bool valid = frameSize != 0 && capacity != 0 && count <= capacity && dataStart == HeaderSize
        && endOfSlots(capacity, frameSize) != 0 && ringStart <= count && (ringStart != 0 || count == 0)
        && framesEnd != 0 && quint64(reader->size()) >= framesEnd
        // Only a full ring has a slot in work, and it is the oldest frame's.
        && (slotInWork == 0 || (count == capacity && slotInWork - 1 == (count - ringStart) % count));
    if (!valid) {
        delete reader;
        std::memset(m_header, 0, sizeof m_header);
        return false;
    }

    m_pReader = reader;
    m_strPath = path;
    m_eType = type;
    m_nCapacity = capacity;
    m_nHeight = height;
    m_nWidth = width;
    m_nRingStart = ringStart;
    m_nFramesAdded = count;
    m_nDataStart = dataStart;
    m_nWritePos = dataStart;
    setReadOrder();
    if (slotInWork != 0) {
        // The producer died overwriting its oldest frame: the others are whole.
        m_nFramesAdded = count - 1;
        m_nOldestSlot = slotInWork % capacity;
    }
    return true;
}

bool CZOImageQueue::getFrameAt(quint64 index, char *buffer)
{
    if (m_bInProcess)
        return false;

    std::lock_guard<std::mutex> lock(m_mutex);
    const quint64 frameSize = frameSizeInBytes();
    if (!buffer || frameSize == 0 || m_strPath.isEmpty())
        return false;
    if (!m_pReader) {
        m_pReader = new QFile(m_strPath);
        if (!m_pReader->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            delete m_pReader;
            m_pReader = nullptr;
            return false;
        }
    }

    const quint64 count = m_nFramesAdded;
    if (count == 0 || index > count)
        return false;
    const quint64 slot = (m_nOldestSlot + (index == count ? 0 : index)) % m_nRingSlots;
    if (slot >= m_nCapacity)
        return false;
    const qint64 offset = qint64(m_nDataStart + slot * frameSize);
    return m_pReader->seek(offset) && m_pReader->read(buffer, qint64(frameSize)) == qint64(frameSize);
}

void CZOImageQueue::getFrameInfo(int &width, int &height, int &a, int &b) const
{
    width = m_nWidth;
    height = m_nHeight;
    a = int(headerWord(24));
    b = int(headerWord(28));
}

quint64 CZOImageQueue::getNumberOfFrames() const
{
    return qMin(m_nFramesAdded, m_nCapacity);
}
