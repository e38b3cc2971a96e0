// The functions of one library for one instruction set. The build names the file of the spelled functions
// (VELORIA_FUNCTIONS), which ends in a list of them, and the symbol that this file defines (VELORIA_TABLE).
#include "wide/Kernel.h"

namespace veloria::gpu::cpu {

namespace VELORIA_SET {
namespace {
#include VELORIA_FUNCTIONS

constexpr Function functions[] = {
#define VELORIA_KERNEL(name) {#name, computeRows<name>, name::reach, false},
#define VELORIA_FRAGMENT(name) {#name, drawRows<name>, -1, true},
    VELORIA_FUNCTION_LIST};
}  // namespace
}  // namespace VELORIA_SET

extern const FunctionTable VELORIA_TABLE;
const FunctionTable VELORIA_TABLE{VELORIA_SET::functions, sizeof VELORIA_SET::functions / sizeof(Function)};

}  // namespace veloria::gpu::cpu
