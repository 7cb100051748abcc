#include "usersections_p.h"

#include "cplclickinfo.h"
#include "cplsection.h"
#include "parserconstants_p.h"

#include <memory>

namespace zoparser {

tag_estatus appendUserSections(CPLSectionList &list, int sections)
{
    if (sections & ~int(CPLClickInfo::UserInputSection))
        return ES_INVALID_INPUT;
    if ((sections & CPLClickInfo::UserInputSection) && !list.getSection(kUserInput())) {
        auto section = std::make_unique<CPLSection>(kUserInput());
        for (const QString &label : defaultUserLabels())
            section->setValue(label, QString());
        return list.addSection(section.release());
    }
    return ES_SUCCESS;
}

} // namespace zoparser
