// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// The records in which messages cross the border of the engine. They are plain words: numbers, and
// pointers to memory from malloc. This header includes nothing, so that a port to another compiler
// or word size can hold its own engine against it.
//
// Wide strings are UCS-2 with a zero unit at the end, units in the order of the machine; characters
// beyond 16 bits are surrogate pairs. The other strings are bytes with a zero at the end. A null
// pointer is a value that was never set.
//
// The engine takes records without changing or keeping them. Records that it fills are released
// with its FreeMMSHdr and FreeMMSBdy, those of ReadMMSMoMtStatus with free(). All records are set
// to zero before they are first used.

/// The id of no message. Ids of messages are below it.
constexpr unsigned short MMS_ENG_INVALID_ID = 65535;

/// How many parts a body record has room for.
constexpr unsigned int MMS_ENG_MAX_PARTS = 40;

/// The header of a stored message.
struct MMS_MSG_HDR_T {
    unsigned short *from; ///< Address of the sender.
    unsigned short *to; ///< Addresses with "," between them; so are the next two.
    unsigned short *cc;
    unsigned short *bcc;
    unsigned short *subject;
    int reserved; ///< Kept as it is.
    int priority; ///< 0 low, 1 normal, 2 high.
    int msgClass; ///< 0 personal, 1 advertisement, 2 informational, 3 auto.
    unsigned int expiry; ///< Seconds; all bits set: none.
    int date; ///< Seconds since 1970-01-01 00:00 UTC.
    int deliveryReport; ///< 1 when wanted.
    int readReport; ///< 1 when wanted.
    int size; ///< Bytes.
    int deliveryTime; ///< Seconds since 1970-01-01 00:00 UTC; -1: at once.
    char *presentation; ///< Media type of the presentation of a related multipart.
    int forwardable; ///< 0 when a part is protected against forwarding.
    unsigned short *appId; ///< The application that the message is for.
    unsigned short *replyAppId; ///< The application that answers go to.
    unsigned short *auxAppInfo; ///< What these two need.
};

/// Where the bytes of a part are.
enum MMS_PART_STORAGE_E : int {
    MMS_PART_IN_MEMORY = 0, ///< At `data`.
    MMS_PART_IN_FILE = 1, ///< At the start of the file `dataFile`.
    MMS_PART_IN_FILE_REGION = 2, ///< `offset` bytes into the file `dataFile`.
};

/// One part of a body. The words that are 0 are kept free.
struct MMS_MSG_PART_T {
    int reserved0;
    int reserved1;
    char *mimeType; ///< In lower case; one that the engine fills may carry parameters.
    char *contentId; ///< Latin-1.
    char *contentLocation; ///< UTF-8.
    int reserved5;
    char *fileName; ///< The local file that the sender took the part from. Latin-1.
    char *headerText; ///< "Content-Type:...;name=...", and a line each for id and location.
    int storage; ///< An MMS_PART_STORAGE_E.
    void *data;
    unsigned short *dataFile; ///< Path of the file with the bytes.
    int offset; ///< Of the region.
    /// In bytes. For a text in memory that the engine filled it counts 16-bit units.
    int size;
};

/// The body of a stored message.
struct MMS_MSG_BDY_T {
    char *contentType; ///< With all parameters.
    unsigned int partCount; ///< How many of the records are used.
    MMS_MSG_PART_T *parts; ///< MMS_ENG_MAX_PARTS records.
};

/// What became of a message on its way.
struct MMS_MOMT_STATUS_T {
    int result; ///< The engine's own, counted from 1; 0: see `status`.
    char *errorText; ///< What the network said to `result`. UTF-8.
    int status; ///< The response status of the network; 128 is success, 0 none yet.
    char *statusText; ///< What the network said to `status`. UTF-8.
    int reserved;
};

// Where pointers have 32 bits the records have the sizes that the phones' engines expect.
static_assert(sizeof(int) == 4 && sizeof(unsigned short) == 2, "a word has 32 bits, a unit 16");
static_assert(sizeof(void *) != 4 || sizeof(MMS_MSG_HDR_T) == 76, "19 words");
static_assert(sizeof(void *) != 4 || sizeof(MMS_MSG_BDY_T) == 12, "3 words");
static_assert(sizeof(void *) != 4 || sizeof(MMS_MSG_PART_T) == 52, "13 words");
static_assert(sizeof(void *) != 4 || sizeof(MMS_MOMT_STATUS_T) == 20, "5 words");
