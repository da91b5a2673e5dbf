#ifndef SEGINTERFACES_H
#define SEGINTERFACES_H

#include <QtGlobal>

class QObject;

// Records the host reads by memory layout. Every field is one pointer-wide
// word, so a 32-bit build has exactly the host's 32-bit layout.

// One named socket: a signal or slot signature that the host pairs with the
// sockets of the same name elsewhere. A record without a name answers the
// request in the record before it.
struct SocketRecord
{
    quintptr reserved0;
    const char *name;
    const char *signature;  // "1..." slot or "2..." signal, as SLOT()/SIGNAL()
    quintptr flagA;
    quintptr flagB;
    quintptr reserved5;
};

// The plug-in descriptor, 21 words.
struct SEGINTERFACES
{
    const char *title;          //  0, windows-1251
    const char *id;             //  1
    quintptr reserved2;         //  2
    const char *group;          //  3, windows-1251
    quintptr reserved4;         //  4
    SocketRecord *sockets;      //  5
    quintptr socketCount;       //  6
    quintptr instanceNumber;    //  7, given by the host
    quintptr flag;              //  8
    quintptr reserved9;         //  9
    quintptr reserved10;        // 10
    QObject *socketObject;      // 11, carries the sockets' signals and slots
    quintptr reserved12;        // 12
    QObject *runObject;         // 13, receives the run and stop slots
    quintptr reserved14;        // 14
    const char *runSlot;        // 15
    const char *stopSlot;       // 16
    quintptr reserved17;        // 17
    quintptr reserved18;        // 18
    const char *description;    // 19, windows-1251
    quintptr reserved20;        // 20
};

static_assert(sizeof(SocketRecord) == 6 * sizeof(quintptr), "socket record is 6 words");
static_assert(sizeof(SEGINTERFACES) == 21 * sizeof(quintptr), "descriptor is 21 words");

#endif // SEGINTERFACES_H
