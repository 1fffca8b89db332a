/* The records as a program built for 32-bit x86 must see them, whatever language it is written in. */
#ifndef VEL_TESTS_PRODUCT_LAYOUT_H
#define VEL_TESTS_PRODUCT_LAYOUT_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "vel/vel.h"

#if UINTPTR_MAX == 0xffffffffu
static_assert(sizeof(VEL_FILE) == 40, "VEL_FILE");
static_assert(sizeof(MimeMsg) == 72, "MimeMsg");
static_assert(sizeof(mime_msg_pool) == 8, "mime_msg_pool");
static_assert(sizeof(recipient) == 28, "recipient");
static_assert(sizeof(RecipTbl) == 12, "RecipTbl");
static_assert(sizeof(UTCtime) == 36, "UTCtime");
static_assert(sizeof(addr822) == 108, "addr822");
static_assert(sizeof(addrlist822) == 12, "addrlist822");
static_assert(sizeof(ms) == 8, "ms");
static_assert(sizeof(PerRecipField) == 32, "PerRecipField");
static_assert(sizeof(EnvRecipChain) == 8, "EnvRecipChain");
static_assert(sizeof(PerRecipChain) == 8, "PerRecipChain");
static_assert(offsetof(DSNEnvelope, arrival) == 16, "DSNEnvelope.arrival");
static_assert(sizeof(_envFrom) == 24, "_envFrom");
static_assert(sizeof(_envRecip) == 20, "_envRecip");
static_assert(sizeof(stEnvelope) == 32, "stEnvelope");

static_assert(offsetof(VEL_FILE, pos) == 12, "VEL_FILE.pos");
static_assert(offsetof(VEL_FILE, buffered) == 36, "VEL_FILE.buffered");
static_assert(offsetof(MimeMsg, boundary) == 40, "MimeMsg.boundary");
static_assert(offsetof(MimeMsg, bodyStart) == 52, "MimeMsg.bodyStart");
static_assert(offsetof(MimeMsg, trueName) == 60, "MimeMsg.trueName");
static_assert(offsetof(MimeMsg, children) == 68, "MimeMsg.children");
static_assert(offsetof(addr822, received) == 96, "addr822.received");
static_assert(offsetof(UTCtime, zone) == 28, "UTCtime.zone");
static_assert(offsetof(stEnvelope, recipients) == 16, "stEnvelope.recipients");
#endif

static_assert(sizeof(MagicRecord) == 376, "MagicRecord");
static_assert(offsetof(MagicRecord, macTypeCreator) == 366, "MagicRecord.macTypeCreator");

static_assert(sizeof(iniFileName) == 16, "iniFileName");
static_assert(sizeof(appName) == 32, "appName");
static_assert(sizeof(VELQueueDir) == 4095, "VELQueueDir");
static_assert(sizeof(VELTempDir) == 4095, "VELTempDir");
static_assert(sizeof(VELInstallDir) == 4095, "VELInstallDir");
static_assert(sizeof(VELLogFileName) == 32, "VELLogFileName");
static_assert(sizeof(INI_MODE) == 4, "INI_MODE");

#endif
