// Arbitrary bytes through the section reader: whole records, the section
// cutter used for profiles, and the label blocks. Whatever parses must write
// back and read again to the same sections.
#include "cplclickinfo.h"
#include "cpllabeldataset.h"
#include "cplpreferencekeylist.h"
#include "cplsection.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));

    CPLClickInfo info;
    info.loadFromText(text);
    QString written;
    if (info.saveToText(written) == ES_SUCCESS) {
        CPLClickInfo again;
        if (again.loadFromText(written) != ES_SUCCESS || again.sectionCount() != info.sectionCount())
            abort();
        for (int i = 0; i < info.sectionCount(); ++i)
            if (*again.sections().at(i) != *info.sections().at(i))
                abort();
    }

    QString buffer = text;
    for (int guard = 0; guard < 100000; ++guard) {
        QString section;
        if (CPLClickInfo::copySectionBuffer(buffer, section) != ES_SUCCESS)
            break;
        std::unique_ptr<CPLSection> parsed(CPLClickInfo::parseSectionFromBuffer(section));
        if (!parsed)
            abort(); // a cut section always parses
    }

    CPLLabelDataSet set;
    set.loadData(text);
    CPLPreferenceKeyList keys;
    QStringList labels;
    set.getLabelData(&labels);
    keys.loadData(text, labels);
    QString block;
    keys.saveData(&set, &block);
    return 0;
}
