#pragma once
// The record database of the application. Only its one integer member lives
// in this library; the reader and writer belong to the application.

#include "zoutils_export.h"

class ZOUTILS_EXPORT CZODatabase
{
public:
    CZODatabase() = default;
    CZODatabase(const CZODatabase &) = default;
    CZODatabase(CZODatabase &&) = default;
    CZODatabase &operator=(const CZODatabase &) = default;
    CZODatabase &operator=(CZODatabase &&) = default;
    virtual ~CZODatabase();

    int recordCount() const { return m_nRecordCount; }
    void setRecordCount(int count) { m_nRecordCount = count; }

private:
    int m_nRecordCount = 0;
};
