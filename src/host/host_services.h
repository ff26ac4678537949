// Calls through the host's procedure tables, behind a test that the table is there and of a kind that we know. A table
// that fails its test is no error here: the wrapper gives a neutral value and its caller decides.
#pragma once

#include <cstdint>

#include "host/host_interface.h"

// True when the table is there, is of version 1, counts 8 procedures or more and its first four are not null. A younger
// version gives false and sets *outNewerVersion to true; outNewerVersion may be null, and is left alone otherwise.
bool HostHandleProcsAvailable(const HandleProcs* procs, Boolean* outNewerVersion);

// These four do nothing, and give null, with a table that fails the test above. A null lockProc gives null; a null
// unlockProc does nothing.
Handle HostNewHandle(const HandleProcs* procs, std::int32_t size);
Ptr HostLockHandle(const HandleProcs* procs, Handle handle, Boolean moveHigh);
void HostUnlockHandle(const HandleProcs* procs, Handle handle);
void HostDisposeHandle(const HandleProcs* procs, Handle handle);

// True when the record and its two tables are there, all three of version 0, the tables count 18 reading and 16 writing
// procedures or more, and none of those is null. A younger version anywhere sets *outNewerVersion, as above.
bool HostDescriptorAvailable(const PIDescriptorParameters* params, Boolean* outNewerVersion);

// Closes the reader, disposes of the descriptor and clears params->descriptor and *token. Gives the close call's code.
OSErr HostCloseReader(PIDescriptorParameters* params, const HandleProcs* procs, PIReadDescriptor* token);

// Disposes of the old descriptor, closes the writer, keeps the new descriptor (null when the host gives none) in
// params->descriptor, sets recordInfo to plugInDialogOptional and clears *token. Always 0.
OSErr HostCloseWriter(PIDescriptorParameters* params, const HandleProcs* procs, PIWriteDescriptor* token);

// True when the host asks for the dialog. False for null.
bool HostPlayDialog(const PIDescriptorParameters* params);
