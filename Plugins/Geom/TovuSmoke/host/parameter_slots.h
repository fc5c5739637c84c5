/* Shared by hosts and plug-ins: the 32-bit parameter slots and how to read a text from one. C11 and C++. */
#ifndef TOVU_HOST_PARAMETER_SLOTS_H
#define TOVU_HOST_PARAMETER_SLOTS_H

#include <stdint.h>

/*
 * The slots are the first 32-bit words of an instance's block, in the order of registration. Declare them as the first
 * fields of the block: int32_t for Int, Bool and Radio, float for Float, uint32_t for String, Container and Image. The
 * host may change them between any two calls, so read a slot again in each call that needs it.
 */

/**
 * The text of a String, Container or Image slot. The slot is the text's address, below 4 GiB on every platform; 0 reads
 * as "". The host owns the memory and may move it when the value changes: use the pointer only within the call.
 */
static inline const char* tovu_slot_text(uint32_t slot) {
#ifdef __cplusplus
    return slot == 0 ? "" : reinterpret_cast<const char*>(static_cast<uintptr_t>(slot));
#else
    return slot == 0 ? "" : (const char*)(uintptr_t)slot;
#endif
}

#endif
