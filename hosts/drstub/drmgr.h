// Test stand-in for the host's event-manager extension header: the subset the
// SVE client uses, with the published names and signatures.
#pragma once

#include "dr_api.h"

extern "C" {

/** Relative ordering of a callback; the client always passes none. */
typedef struct _drmgr_priority_t {
    size_t struct_size;
    const char* name;
    const char* before;
    const char* after;
    int priority;
} drmgr_priority_t;

typedef dr_emit_flags_t (*drmgr_xform_cb_t)(void* drcontext, void* tag, instrlist_t* bb, bool for_trace,
                                            bool translating);

bool drmgr_init(void);
void drmgr_exit(void);

bool drmgr_register_thread_init_event(void (*func)(void* drcontext));
bool drmgr_register_thread_exit_event(void (*func)(void* drcontext));
bool drmgr_unregister_thread_init_event(void (*func)(void* drcontext));
bool drmgr_unregister_thread_exit_event(void (*func)(void* drcontext));

bool drmgr_register_bb_app2app_event(drmgr_xform_cb_t func, drmgr_priority_t* priority);
bool drmgr_unregister_bb_app2app_event(drmgr_xform_cb_t func);

int drmgr_register_tls_field(void);
bool drmgr_unregister_tls_field(int idx);
void* drmgr_get_tls_field(void* drcontext, int idx);
bool drmgr_set_tls_field(void* drcontext, int idx, void* value);

}  // extern "C"
