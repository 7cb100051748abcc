#pragma once
// A bounded queue of equally sized image frames kept in a file instead of in
// memory. A producer appends frames; once the capacity is reached the oldest
// frames are overwritten in ring order. finalizeImageQueue() writes the header,
// after which the frames can be read back by logical index (0 = oldest), from
// this object or from another one opened on the same file with initFromFile().
//
// File layout: an 80-byte header of little-endian 32-bit words, then
// `capacity` frame slots; slot k starts at 80 + k * frameSizeInBytes().
//   0 frames held   4 capacity (low 32 bits)   8 height   12 width
//   16 ring start   20 data start (80)          24, 28 the two values given to
//   finalizeImageQueue() (1 and 0 until then)   32..79 zero
//
// While frames are added, the header on disk is kept current and counts only
// complete frames, so a queue whose producer died before finalising still
// opens with initFromFile(): word 32 then names the slot being overwritten
// (slot + 1), whose old frame is left out. A finalised file has zeros there.
//
// The file belongs to the object: the destructor deletes it.
//
// Threads: addFrame() and getFrameAt() may be called from any thread; they are
// serialised by the queue's mutex. Initialising, finalising and reopening
// belong to the owning thread.

#include "zoutils_export.h"
#include "zoenums.h"

#include <QString>

#include <atomic>
#include <mutex>

class QFile;

class ZOUTILS_EXPORT CZOImageQueue
{
public:
    static constexpr int HeaderSize = 80;

    // An empty queue: nothing can be added or read until initImageQueue() or
    // initFromFile().
    CZOImageQueue();
    // initImageQueue(path, capacity, width, height, type, true).
    CZOImageQueue(QString path, quint64 capacity, int width, int height, ZOSDataTypes type);
    virtual ~CZOImageQueue(); // deletes the queue file, deliberately

    CZOImageQueue(const CZOImageQueue &) = delete;
    CZOImageQueue &operator=(const CZOImageQueue &) = delete;

    // Starts a new queue in `path` and writes its first header; a file already
    // there is replaced in one step, never left half written. With `deleteOld`
    // the file of the previous queue, if any, is removed.
    // When the file cannot be opened for writing, or the capacity, size or type
    // is unusable (capacity 0, width or height below 1, unknown type), the queue
    // stays closed: isImageQueueModInProcess() is false and addFrame() refuses.
    void initImageQueue(QString path, quint64 capacity, int width, int height, ZOSDataTypes type,
                        bool deleteOld);

    // Appends one frame of frameSizeInBytes() bytes read from `data`. False
    // before initImageQueue(), after finalizeImageQueue(), for a null pointer
    // or when a write fails: the frame is then not added, and once the ring is
    // full the failed write may have damaged the oldest frame's slot.
    bool addFrame(const char *data);

    // Ends appending: the number of frames held becomes min(added, capacity)
    // and the header, with the caller's two values `a` and `b`, is written.
    void finalizeImageQueue(int a, int b);

    // Opens a finalised queue file, or one whose producer died, read-only;
    // `type` is the pixel type it was written with (the header does not record
    // it). False, leaving the object empty and the file untouched (and not
    // deleted later), when the file cannot be opened, is shorter than its
    // header says or the header is impossible.
    bool initFromFile(QString path, ZOSDataTypes type);

    // Copies frame `index` (0 = oldest) into `buffer`, which must hold
    // frameSizeInBytes() bytes. False while frames are still being added, for a
    // null buffer, an index above the frame count, or a failed read. An index
    // equal to the frame count is accepted deliberately, for callers that loop
    // up to and including the count; it reads the oldest frame, as index 0 does.
    bool getFrameAt(quint64 index, char *buffer);

    // Width, height and the two values given to finalizeImageQueue().
    void getFrameInfo(int &width, int &height, int &a, int &b) const;
    quint64 getNumberOfFrames() const; // min(frames added, capacity)
    int getWidth() const { return m_nWidth; }
    int getHeight() const { return m_nHeight; }
    bool isImageQueueModInProcess() const { return m_bInProcess.load(); }

    quint64 capacity() const { return m_nCapacity; }
    quint64 ringStart() const { return m_nRingStart; }
    quint64 frameSizeInBytes() const;
    QString filePath() const { return m_strPath; }

private:
    void clear();
    void closeFilesLocked();
    // The header image: frames held, ring start, the two caller values and the
    // slot being overwritten + 1 (0 for none; kept only while adding).
    void fillHeader(quint64 count, quint64 ringStart, quint32 a, quint32 b, quint32 slotInWork);
    bool writeHeaderLocked();
    void setReadOrder();
    quint32 headerWord(int offset) const;

    ZOSDataTypes m_eType = ZOS_DT_UNKNOWN;
    quint64 m_nCapacity = 0;
    int m_nHeight = 0;
    int m_nWidth = 0;
    // Ring invariants while adding (n = m_nFramesAdded, c = m_nCapacity):
    // m_nWritePos = 80 + (n mod c) * frame size; m_nRingStart = n while n < c,
    // else c - (n mod c), so logical index 0 lives in slot n mod c.
    // After finalising, m_nFramesAdded is the number of frames held (<= c).
    quint64 m_nFramesAdded = 0;
    // Reading: logical index i < frames held lives in slot
    // (m_nOldestSlot + i) mod m_nRingSlots; set by finalising and reopening.
    quint64 m_nOldestSlot = 0;
    quint64 m_nRingSlots = 0;
    quint64 m_nDataStart = 0;
    quint64 m_nWritePos = 0;
    quint64 m_nRingStart = 0;
    std::atomic<bool> m_bInProcess{false}; // read without the mutex
    QFile *m_pWriter = nullptr; // owned; guarded by m_mutex
    QFile *m_pReader = nullptr; // owned, opened on first read; guarded by m_mutex
    QString m_strPath;
    std::mutex m_mutex; // not QMutex, whose contended path the thread checker cannot see
    unsigned char m_header[HeaderSize] = {};
};
