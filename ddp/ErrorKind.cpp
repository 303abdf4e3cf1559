#include "ddp/ErrorKind.h"

#include "ddp/CheckedAccess.h"

ErrorKind errorKindForReadResult(ReadResult result)
{
    static const std::map<ReadResult, ErrorKind> kMap = {
        {ReadResult::DdpidUnreadable, ErrorKind::DdpidInvalid},
        {ReadResult::DdpmsUnreadable, ErrorKind::DdpmsInvalid},
        {ReadResult::PqDescriptorUnreadable, ErrorKind::PqdescrInvalid},
    };
    return checkedMapAt(kMap, result);
}
