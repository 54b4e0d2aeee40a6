#pragma once

#include "target.h"

/// The midrange client's functions as its own headers would have them. Handles are 32-bit numbers; wide text is 16-bit
/// units with a zero unit at its end.

// Systems
TARGET_EXPORT std::uint32_t cwbCO_CreateSystem(const char16_t *name, std::uint32_t *system);
TARGET_EXPORT std::uint32_t cwbCO_SetUserIDEx(std::uint32_t system, const char16_t *user);
TARGET_EXPORT std::uint32_t cwbCO_SetPassword(std::uint32_t system, const char16_t *password);
TARGET_EXPORT std::uint32_t cwbCO_SetPromptMode(std::uint32_t system, std::uint32_t mode);
TARGET_EXPORT std::uint32_t cwbCO_DeleteSystem(std::uint32_t system);

// Remote commands and programs
TARGET_EXPORT std::uint32_t cwbRC_StartSysEx(std::uint32_t system, std::uint32_t *request);
TARGET_EXPORT std::uint32_t cwbRC_CreatePgm(const char16_t *name, const char16_t *library, std::uint32_t *program);
TARGET_EXPORT std::uint32_t cwbRC_RunCmd(std::uint32_t request, const char *command, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbRC_AddParm(std::uint32_t program, std::uint16_t type, std::uint32_t length,
                                          unsigned char *parameter);
TARGET_EXPORT std::uint32_t cwbRC_CallPgm(std::uint32_t request, std::uint32_t program, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbRC_DeletePgm(std::uint32_t program);
TARGET_EXPORT std::uint32_t cwbRC_StopSys(std::uint32_t request);

// Code pages and conversion
TARGET_EXPORT std::uint32_t cwbNL_GetHostCCSID(const char *system, std::uint32_t *ccsid);
TARGET_EXPORT std::uint32_t cwbNL_CCSIDToCodePage(std::uint32_t ccsid, std::uint32_t *page, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbNL_CodePageToCCSID(std::uint32_t page, std::uint32_t *ccsid, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbNL_GetCodePage(std::uint32_t *page, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbNL_CreateConverter(std::uint32_t from, std::uint32_t to, std::uint32_t *converter,
                                                  std::uint32_t errors, std::uint32_t shift, std::uint32_t pads,
                                                  const char *pad);
TARGET_EXPORT std::uint32_t cwbNL_DeleteConverter(std::uint32_t converter, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbNL_Convert(std::uint32_t converter, std::uint32_t source_length,
                                          std::uint32_t target_length, const unsigned char *source,
                                          unsigned char *target, std::uint32_t *out1, std::uint32_t *out2,
                                          std::uint32_t *out3, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbNL_GetANSICodePage(std::uint32_t *page, std::uint32_t errors);

// Error handles
TARGET_EXPORT std::uint32_t cwbSV_CreateErrHandle(std::uint32_t *errors);
TARGET_EXPORT std::uint32_t cwbSV_DeleteErrHandle(std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbSV_GetErrCount(std::uint32_t errors, std::uint32_t *count);
TARGET_EXPORT std::uint32_t cwbSV_GetErrTextIndexed(std::uint32_t errors, std::uint32_t index, unsigned char *message,
                                                    std::uint32_t length, std::uint32_t *needed);

// Packed decimals
TARGET_EXPORT std::uint32_t cwbDT_StringToPacked(unsigned char *packed, const char16_t *digits, std::uint32_t length,
                                                 std::uint32_t position);
TARGET_EXPORT std::uint32_t cwbDT_PackedToString(char16_t *digits, const unsigned char *packed, std::uint32_t length,
                                                 std::uint32_t position);

// Database
TARGET_EXPORT std::uint32_t cwbDB_SetStatementName(std::uint32_t request, const char16_t *name, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetCursorName(std::uint32_t request, const char16_t *name, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetStatementText(std::uint32_t request, const char16_t *statement,
                                                   std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_DeleteDataHandle(std::uint32_t data, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_DeleteDataFormatHandle(std::uint32_t format, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_DeleteSQLRequestHandle(std::uint32_t request, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_StopServer(std::uint32_t connection, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_DeleteConnectionHandle(std::uint32_t connection, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_CreateDataHandle(std::uint32_t *data, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_CreateConnectionHandleEx(std::uint32_t system, std::uint32_t *connection,
                                                           std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_StartServer(std::uint32_t connection, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_CreateSQLRequestHandle(std::uint32_t connection, std::uint32_t *request,
                                                         std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_CreateDataFormatHandle(std::uint32_t connection, std::uint32_t *format,
                                                         std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetClientInputCCSID(std::uint32_t request, std::uint32_t ccsid, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_ReturnHostErrorInfo(std::uint32_t request, std::uint16_t *out1, std::uint32_t *out2,
                                                      std::uint32_t value1, std::uint32_t value2, std::uint32_t value3,
                                                      std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetDescribeOption(std::uint32_t request, std::uint32_t option, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_StoreRequestParameters(std::uint32_t request, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_ReturnDataFormat(std::uint32_t request, std::uint32_t format, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_PrepareDescribe(std::uint32_t request, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_Open(std::uint32_t request, std::uint32_t option, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetBlockCount(std::uint32_t request, std::uint32_t count, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_ReturnData(std::uint32_t request, std::uint32_t data, std::uint32_t value1,
                                             std::uint32_t value2, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_Fetch(std::uint32_t request, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnCount(std::uint32_t format, std::uint32_t *count, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnLength(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                  std::uint32_t *length, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnType(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                std::uint16_t *type, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnCCSID(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                 std::uint16_t *ccsid, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnName(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetColumnScale(std::uint32_t format, std::uint32_t column, std::uint32_t value,
                                                 std::uint16_t *scale, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetDataPointer(std::uint32_t data, const void **pointer, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_GetDataLength(std::uint32_t data, std::uint32_t *length, std::uint32_t errors);
TARGET_EXPORT std::uint32_t cwbDB_SetNamingConvention(std::uint32_t connection, std::uint16_t convention,
                                                      std::uint32_t errors);

/// The block that the last cwbRC_AddParm was given, for a program that has the library linked in. Null if there was
/// none.
unsigned char *LastParameter();
