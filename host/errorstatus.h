// The host's error statuses, with its numeric values and the names its status-text call
// prints. Only the statuses the plug-in and the headless host use are listed.
#pragma once

namespace corvane::host {

struct Acad {
  enum ErrorStatus : int {
    eOk = 0,
    eNotImplementedYet = 1,
    eNotApplicable = 2,
    eInvalidInput = 3,
    eOutOfMemory = 6,
    eBufferTooSmall = 7,
    eInvalidOpenState = 8,
    eHandleExists = 10,
    eNullHandle = 11,
    eUnknownHandle = 13,
    eNullObjectPointer = 15,
    eNullObjectId = 16,
    eIllegalEntityType = 21,
    eKeyNotFound = 22,
    eDuplicateKey = 23,
    eInvalidIndex = 24,
    eAlreadyInDb = 26,
    eInvalidExtents = 30,
    eInvalidKey = 33,
    eWrongObjectType = 34,
    eWrongDatabase = 35,
    eNotOpenForRead = 44,
    eNotOpenForWrite = 45,
    eNotThatKindOfClass = 46,
    eFilerError = 53,
    eFileAccessErr = 72,
    eFileNotFound = 76,
    eWasErased = 80,
    ePermanentlyErased = 81,
    eWasOpenForRead = 82,
    eWasOpenForWrite = 83,
    eNotAnEntity = 93,
    eWasNotOpenForWrite = 100,
    eWasNotErased = 107,
    eNoDatabase = 124,
    eRegappIdNotFound = 126,
    eNotInDatabase = 137,
    eOutOfRange = 151,
    eBadDxfFile = 368,
    eNullPtr = 506,
    eInvalidObjectId = 600,
  };
};

// The name of a status as the host's status-text call prints it ("eInvalidInput"); statuses
// this table does not know print as "eUnknown".
const wchar_t* acadErrorStatusText(Acad::ErrorStatus status) noexcept;

}  // namespace corvane::host
