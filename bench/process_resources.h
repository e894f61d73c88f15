// What this process holds, read from /proc: the figures for connections that
// the history writers leave open on purpose.
#ifndef HUSHWALL_BENCH_PROCESS_RESOURCES_H_
#define HUSHWALL_BENCH_PROCESS_RESOURCES_H_

namespace hushwall::bench {

struct ProcessResources {
  long openDescriptors = 0;  // entries of /proc/self/fd
  long residentKiB = 0;      // VmRSS
};

ProcessResources currentProcessResources();

}  // namespace hushwall::bench

#endif  // HUSHWALL_BENCH_PROCESS_RESOURCES_H_
