#pragma once
// The user-specific sections shared by click-info and sequence records.
// Not installed.

#include "zoenums.h"

class CPLSectionList;

namespace zoparser {

// Appends each section named by the flags of `sections`
// (CPLClickInfo::UserSections) that `list` lacks.
tag_estatus appendUserSections(CPLSectionList &list, int sections);

} // namespace zoparser
