#pragma once

// The fixed names of a DDP folder, and the names the errors once had as
// strings (failures now travel as ErrorKind; the strings are kept for
// anything that logs or matches them).
inline constexpr const char* kDdpidFileName = "DDPID";
inline constexpr const char* kDdpmsFileName = "DDPMS";
inline constexpr const char* kPqDescFileName = "PQDESC";
inline constexpr const char* kImageFileName = "IMAGE.DAT";
inline constexpr const char* kDdpidMissingError = "ddpidMissingError";
inline constexpr const char* kDdpmsMissingError = "ddpmsMissingError";
inline constexpr const char* kPqdescrMissingError = "pqdescrMissingError";
inline constexpr const char* kDdpidInvalidError = "ddpidInvalidError";
inline constexpr const char* kDdpmsInvalidError = "ddpmsInvalidError";
inline constexpr const char* kPqdescrInvalidError = "pqdescrInvalidError";
