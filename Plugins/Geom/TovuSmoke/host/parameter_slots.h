/* Shared by hosts and plug-ins: how a text gets through a 32-bit parameter slot. C11 and C++. */
#ifndef TOVU_HOST_PARAMETER_SLOTS_H
#define TOVU_HOST_PARAMETER_SLOTS_H

#include <stdint.h>

/*
 * The slots are the first 32-bit words of an instance's block, in the order of registration. Declare them as the first
 * fields of the block: int32_t for Int, Bool and Radio, float for Float, uint32_t for String, Container and Image. The
 * host writes them between calls; a plug-in reads them afresh wherever it needs them.
 */

/**
 * The text behind a String, Container or Image slot: the slot is its address, below 4 GiB on every platform; 0 reads as
 * "". The memory is the host's, and moves when the value changes: use it within the call, copy what you keep.
 */
static inline const char* tovu_slot_text(uint32_t slot) {
#ifdef __cplusplus
    return slot == 0 ? "" : reinterpret_cast<const char*>(static_cast<uintptr_t>(slot));
#else
    return slot == 0 ? "" : (const char*)(uintptr_t)slot;
#endif
}

#endif
