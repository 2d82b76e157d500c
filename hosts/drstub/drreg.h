// Test stand-in for the host's register-manager extension header: the subset
// the SVE client uses, with the published names and signatures.
#pragma once

#include "dr_api.h"

extern "C" {

typedef enum {
    DRREG_SUCCESS,
    DRREG_ERROR,
    DRREG_ERROR_INVALID_PARAMETER,
    DRREG_ERROR_FEATURE_NOT_AVAILABLE,
    DRREG_ERROR_REG_CONFLICT,
    DRREG_ERROR_IN_USE,
    DRREG_ERROR_OUT_OF_SLOTS,
    DRREG_ERROR_NO_APP_VALUE,
} drreg_status_t;

typedef struct _drreg_options_t {
    size_t struct_size;
    uint num_spill_slots;
    bool conservative;
    bool (*error_callback)(drreg_status_t status);
    bool do_not_sum_slots;
} drreg_options_t;

drreg_status_t drreg_init(drreg_options_t* ops);
drreg_status_t drreg_exit(void);

}  // extern "C"
