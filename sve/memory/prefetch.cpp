// Prefetches. A hint has no architectural effect, and there is nothing to
// warm on a host that runs the loads itself a moment later: no field is cut,
// no memory is touched (a prefetch of an unmapped address must stay silent),
// and `instruction` is not written.
#include "sve/memory/mem_kernels.h"

aarch64_decode_rc VecU8Prefetch1SI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU16Prefetch2SI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch4SI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8SI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU8Prefetch1LSS(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU16Prefetch2LSS(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch4LSS(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8LSS(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch1VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch2VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch4VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch8VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch1XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch2XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch4XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch8XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch1YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch2YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch4YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU32Prefetch8YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch1VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch2VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch4VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8VI(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch1XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch2XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch4XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8XSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch1YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch2YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch4YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8YSV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch1SV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch2SV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch4SV(cpu_state*, unsigned) { return DECODE_OK; }
aarch64_decode_rc VecU64Prefetch8SV(cpu_state*, unsigned) { return DECODE_OK; }
