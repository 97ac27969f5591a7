// The routing shell's listings and the LLDP daemon's neighbour file: the route reader, the
// OSPF line parsers and "KEY:VALUE" split, and the LLDP reader over the same bytes.
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "netstat/internal.h"

namespace {
template <std::size_t N>
void expect_terminated(const char (&text)[N]) {
  if (strnlen(text, N) == N) __builtin_trap();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace syscommon::netstat;
  static std::vector<RouteRecord> routes(64);
  static std::vector<LldpNeighbor> neighbors(LLDP_MAX_NEIGHBORS);
  const syscommon::fuzz::MemoryFile file(data, size);
  if (file.get() == nullptr) return 0;

  // The capacity comes from the listing's line count; the reader must keep to it.
  const int capacity = size == 0 ? 0 : data[0] % 64;
  const int n = read_routes(file.get(), routes.data(), capacity);
  if (n < 0 || n > capacity) __builtin_trap();
  for (int i = 0; i < n; ++i) {
    expect_terminated(routes[i].destination);
    expect_terminated(routes[i].port);
  }

  const std::string text = syscommon::fuzz::text_of(data, size);
  OspfNeighbor neighbor{};
  parse_ospf_neighbor(text.c_str(), neighbor);
  expect_terminated(neighbor.neighbor_id);
  expect_terminated(neighbor.port);
  OspfDbRecord db{};
  parse_ospf_db(text.c_str(), db);
  expect_terminated(db.seq);
  OspfIfState state{};
  split_pair(text.c_str(), state.key, state.value);
  expect_terminated(state.key);
  expect_terminated(state.value);

  file.rewind();
  const int records = read_lldp(file.get(), neighbors.data());
  if (records < 0 || records > LLDP_MAX_NEIGHBORS + 1) __builtin_trap();
  return 0;
}
