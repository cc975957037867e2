// A plugin for qemu-user that counts how often each translated block of the guest runs between two
// system calls that Linux doesn't have: kBeginCount and kEndCount of bench/arm64/counted.h.
//   qemu-aarch64 -plugin block_counter.so,out=FILE PROGRAM
// Each counted span becomes lines in FILE, numbers hexadecimal:
//   span NUMBER
//   block RUNS ADDRESS INSTRUCTIONS    (one for each block that ran; instructions as 8 digits each)
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <vector>

#include "bench/arm64/counted.h"

// What is used of the emulator's plugin interface; there is no package of its header.
extern "C" {
struct qemu_plugin_tb;
struct qemu_plugin_insn;
struct qemu_info_t;
using qemu_plugin_id_t = uint64_t;
enum qemu_plugin_op { QEMU_PLUGIN_INLINE_ADD_U64 };

std::size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* tb);
uint64_t qemu_plugin_tb_vaddr(const qemu_plugin_tb* tb);
qemu_plugin_insn* qemu_plugin_tb_get_insn(const qemu_plugin_tb* tb, std::size_t index);
const void* qemu_plugin_insn_data(const qemu_plugin_insn* insn);
void qemu_plugin_register_vcpu_tb_exec_inline(qemu_plugin_tb* tb, qemu_plugin_op op, void* ptr,
                                              uint64_t imm);
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t, qemu_plugin_tb*));
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t id,
                                          void (*callback)(qemu_plugin_id_t, unsigned vcpu,
                                                           int64_t number, uint64_t, uint64_t,
                                                           uint64_t, uint64_t, uint64_t, uint64_t,
                                                           uint64_t, uint64_t));

[[gnu::visibility("default")]] int qemu_plugin_version = 1;
[[gnu::visibility("default")]] int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* info,
                                                       int count, char** arguments);
}

namespace alg::bench {
namespace {

struct Block {
  uint64_t runs;  // first, and never moved: the translated code adds to it
  uint64_t address;
  std::vector<uint32_t> instructions;
};

std::mutex mutex;
std::deque<Block> blocks;
std::FILE* out = nullptr;

void onTranslated(qemu_plugin_id_t /*id*/, qemu_plugin_tb* tb) {
  const std::lock_guard lock(mutex);
  Block& block = blocks.emplace_back();
  block.address = qemu_plugin_tb_vaddr(tb);
  block.instructions.resize(qemu_plugin_tb_n_insns(tb));
  for (std::size_t i = 0; i < block.instructions.size(); ++i) {
    std::memcpy(&block.instructions[i], qemu_plugin_insn_data(qemu_plugin_tb_get_insn(tb, i)), 4);
  }
  qemu_plugin_register_vcpu_tb_exec_inline(tb, QEMU_PLUGIN_INLINE_ADD_U64, &block.runs, 1);
}

void writeSpan(uint64_t span) {
  std::fprintf(out, "span %lx\n", static_cast<unsigned long>(span));
  for (const Block& block : blocks) {
    if (block.runs == 0) continue;
    std::fprintf(out, "block %lx %lx ", static_cast<unsigned long>(block.runs),
                 static_cast<unsigned long>(block.address));
    for (const uint32_t instruction : block.instructions) std::fprintf(out, "%08x", instruction);
    std::fputc('\n', out);
  }
  std::fflush(out);
}

void onSystemCall(qemu_plugin_id_t /*id*/, unsigned /*vcpu*/, int64_t number, uint64_t span,
                  uint64_t /*a2*/, uint64_t /*a3*/, uint64_t /*a4*/, uint64_t /*a5*/,
                  uint64_t /*a6*/, uint64_t /*a7*/, uint64_t /*a8*/) {
  if (number != kBeginCount && number != kEndCount) return;
  const std::lock_guard lock(mutex);
  if (number == kEndCount) writeSpan(span);
  for (Block& block : blocks) block.runs = 0;
}

}  // namespace
}  // namespace alg::bench

int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t* /*info*/, int count,
                        char** arguments) {
  for (int i = 0; i < count; ++i) {
    if (std::strncmp(arguments[i], "out=", 4) == 0) {
      alg::bench::out = std::fopen(arguments[i] + 4, "w");
    }
  }
  if (alg::bench::out == nullptr) return -1;
  qemu_plugin_register_vcpu_tb_trans_cb(id, alg::bench::onTranslated);
  qemu_plugin_register_vcpu_syscall_cb(id, alg::bench::onSystemCall);
  return 0;
}
