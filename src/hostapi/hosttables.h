#ifndef HOSTTABLES_H
#define HOSTTABLES_H

#include <QtGlobal>

// The host's tables of the language's operations and types, handed over as
// a pair of ARRAYs. A table is walked from first while below end.
struct ARRAY
{
    void *first;
    quintptr reserved;
    void *end;
};

struct OperationRecord
{
    const char *name;           // ASCII
    quintptr reserved1[6];
    const char *secondName;     // windows-1251, may be null
    quintptr reserved8;
};

struct TypeRecord
{
    const char *name;           // windows-1251
    const char *secondName;     // windows-1251, may be null
    quintptr reserved2[4];
};

static_assert(sizeof(ARRAY) == 3 * sizeof(quintptr), "ARRAY is 3 words");
static_assert(sizeof(OperationRecord) == 9 * sizeof(quintptr), "operation record is 9 words");
static_assert(sizeof(TypeRecord) == 6 * sizeof(quintptr), "type record is 6 words");

#endif // HOSTTABLES_H
