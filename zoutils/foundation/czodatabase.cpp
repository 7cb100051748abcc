#include "czodatabase.h"

CZODatabase::~CZODatabase() = default;
