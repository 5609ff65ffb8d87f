#include "host/errorstatus.h"

namespace corvane::host {

const wchar_t* acadErrorStatusText(Acad::ErrorStatus status) noexcept {
  switch (status) {
#define CORVANE_STATUS(name) \
  case Acad::name:           \
    return L## #name;
    CORVANE_STATUS(eOk)
    CORVANE_STATUS(eNotImplementedYet)
    CORVANE_STATUS(eNotApplicable)
    CORVANE_STATUS(eInvalidInput)
    CORVANE_STATUS(eOutOfMemory)
    CORVANE_STATUS(eBufferTooSmall)
    CORVANE_STATUS(eInvalidOpenState)
    CORVANE_STATUS(eHandleExists)
    CORVANE_STATUS(eNullHandle)
    CORVANE_STATUS(eUnknownHandle)
    CORVANE_STATUS(eNullObjectPointer)
    CORVANE_STATUS(eNullObjectId)
    CORVANE_STATUS(eIllegalEntityType)
    CORVANE_STATUS(eKeyNotFound)
    CORVANE_STATUS(eDuplicateKey)
    CORVANE_STATUS(eInvalidIndex)
    CORVANE_STATUS(eAlreadyInDb)
    CORVANE_STATUS(eInvalidExtents)
    CORVANE_STATUS(eInvalidKey)
    CORVANE_STATUS(eWrongObjectType)
    CORVANE_STATUS(eWrongDatabase)
    CORVANE_STATUS(eNotOpenForRead)
    CORVANE_STATUS(eNotOpenForWrite)
    CORVANE_STATUS(eNotThatKindOfClass)
    CORVANE_STATUS(eFilerError)
    CORVANE_STATUS(eFileAccessErr)
    CORVANE_STATUS(eFileNotFound)
    CORVANE_STATUS(eWasErased)
    CORVANE_STATUS(ePermanentlyErased)
    CORVANE_STATUS(eWasOpenForRead)
    CORVANE_STATUS(eWasOpenForWrite)
    CORVANE_STATUS(eNotAnEntity)
    CORVANE_STATUS(eWasNotOpenForWrite)
    CORVANE_STATUS(eWasNotErased)
    CORVANE_STATUS(eNoDatabase)
    CORVANE_STATUS(eRegappIdNotFound)
    CORVANE_STATUS(eNotInDatabase)
    CORVANE_STATUS(eOutOfRange)
    CORVANE_STATUS(eBadDxfFile)
    CORVANE_STATUS(eNullPtr)
    CORVANE_STATUS(eInvalidObjectId)
#undef CORVANE_STATUS
  }
  return L"eUnknown";
}

}  // namespace corvane::host
