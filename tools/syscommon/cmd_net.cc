// syscommon net: watch and poke the datagrams the management processes exchange over the
// local sockets under the (simulated) RAM disk.
#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "net/internal.h"
#include "platform/local_socket.h"
#include "syscommon/net.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

volatile std::sig_atomic_t g_stop = 0;
void on_signal(int) { g_stop = 1; }

std::vector<uint8_t> parse_hex(const std::string &text) {
  if (text.size() % 2 != 0 || text.size() > std::size_t{2} * NET_MSG_DATA_SIZE)
    throw UsageError{"--hex takes an even number of hex digits, at most 8192"};
  std::vector<uint8_t> bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const std::string pair = text.substr(i, 2);
    if (std::isxdigit(static_cast<unsigned char>(pair[0])) == 0 || std::isxdigit(static_cast<unsigned char>(pair[1])) == 0)
      throw UsageError{"--hex: '" + pair + "' is not a hex byte"};
    bytes.push_back(static_cast<uint8_t>(std::stoul(pair, nullptr, 16)));
  }
  return bytes;
}

// A socket NAME is a path under the RAM disk: it may not climb out of it, and listening
// never removes a file that is not a socket.
std::string socket_name(const Options &o) {
  if (o.positional.size() != 1) throw UsageError{"expected one socket NAME, e.g. socket/lumen168-socket"};
  const std::string &name = o.positional[0];
  constexpr std::size_t kPathRoom = sizeof(sockaddr_un::sun_path) - 1;
  check_text(name, "socket NAME", kPathRoom);
  if (name[0] == '/' || ("/" + name + "/").find("/../") != std::string::npos)
    throw UsageError{"socket NAME is a path under the RAM disk, without a leading '/' or '..', not '" + name + "'"};
  if (net::ramdisk_path(name.c_str()).size() > kPathRoom) throw UsageError{"socket NAME '" + name + "' is too long"};
  return name;
}

void print_datagram(unsigned n, const InterfaceMessage &m, std::size_t size, std::string_view from) {
  std::printf("datagram %u: %zu bytes from %s\n", n, size, from.empty() ? "(unbound sender)" : std::string(from).c_str());
  std::printf("  seq %u  type %u  command %u  count %u  more %u  tag %u  record size %u\n", m.seq, m.type, m.command,
              m.count, m.more, m.tag, m.record_size);
  // The records, and any stray nonzero bytes after them.
  std::size_t shown = std::min<std::size_t>(static_cast<std::size_t>(m.count) * m.record_size, sizeof m.data);
  for (std::size_t i = sizeof m.data; i > shown; --i)
    if (m.data[i - 1] != 0) {
      shown = i;
      break;
    }
  if (shown == 0) std::puts("  (no data)");
  for (std::size_t line = 0; line < shown; line += 16) {
    std::printf("  %04zx:", line);
    for (std::size_t i = line; i < line + 16 && i < shown; ++i) std::printf(" %02x", m.data[i]);
    std::putchar('\n');
  }
  std::fflush(stdout);
}

int cmd_listen(const Args &args) {
  const Options o = parse_options(args, {"--count"});
  const std::string name = socket_name(o);
  const long long limit = o.get("--count") != nullptr ? parse_number(*o.get("--count"), "--count", 1, 1000000) : 0;
  const std::string path = net::ramdisk_path(name.c_str());
  std::error_code error;
  const auto kind = std::filesystem::symlink_status(path, error).type();
  if (kind != std::filesystem::file_type::not_found && kind != std::filesystem::file_type::socket) {
    std::fprintf(stderr, "syscommon net: %s exists and is not a socket; not removed\n", path.c_str());
    return 1;
  }
  InterfaceSocket ep{};
  if (net_OpenSocketToInterface_Recv(&ep, name.c_str()) != 0) {
    std::fprintf(stderr, "syscommon net: cannot listen on %s\n", name.c_str());
    if (ep.fd >= 0) close_descriptor(ep.fd);
    return 1;
  }
  const std::string own(local_path(ep.address));
  std::signal(SIGINT, on_signal);
  std::signal(SIGTERM, on_signal);
  std::printf("listening on %s\n", own.c_str());
  std::fflush(stdout);
  InterfaceMessage m;
  unsigned seen = 0;
  while (g_stop == 0 && (limit == 0 || seen < limit)) {
    timeval tick{0, 200000};  // look at the stop flag now and then
    const int ready = wait_readable(ep.fd, &tick);
    if (ready <= 0) continue;
    sockaddr_un from{};
    socklen_t from_len = sizeof from;
    std::memset(&m, 0, sizeof m);
    const ssize_t got = local_recvfrom(ep.fd, &m, sizeof m, &from, &from_len);
    if (got < 0) continue;
    print_datagram(++seen, m, static_cast<std::size_t>(got),
                   from_len > sizeof(sa_family_t) ? local_path(from) : std::string_view{});
  }
  close_descriptor(ep.fd);
  remove_path(own);
  return 0;
}

int cmd_send(const Args &args) {
  const Options o = parse_options(args, {"--type", "--cmd", "--hex", "--seq", "--offset", "--tag", "--record-size"});
  const std::string name = socket_name(o);
  if (o.get("--type") == nullptr || o.get("--cmd") == nullptr) throw UsageError{"--type and --cmd are required"};
  auto number = [&](const char *option, long long def, long long max) {
    return o.get(option) != nullptr ? parse_number(*o.get(option), option, 0, max) : def;
  };
  const std::vector<uint8_t> data = o.get("--hex") != nullptr ? parse_hex(*o.get("--hex")) : std::vector<uint8_t>{};
  const long long record_size = number("--record-size", static_cast<long long>(data.size()), NET_MSG_DATA_SIZE);
  if (!data.empty() && (record_size == 0 || data.size() % record_size != 0 || data.size() / record_size > 255))
    throw UsageError{"--record-size must divide the data into at most 255 records"};

  InterfaceSocket ep{};
  if (net_OpenSocketToInterface_Send(&ep, name.c_str(), static_cast<uint32_t>(number("--offset", 0, 255))) != 1)
    return 1;
  ep.tag = static_cast<uint8_t>(number("--tag", 0, 255));
  InterfaceMessage m{};
  m.seq = static_cast<uint8_t>(number("--seq", 1, 255));
  m.type = static_cast<uint8_t>(parse_number(*o.get("--type"), "--type", 0, 255));
  m.command = static_cast<uint8_t>(parse_number(*o.get("--cmd"), "--cmd", 0, 255));
  m.record_size = static_cast<uint32_t>(record_size);
  m.count = data.empty() ? 0 : static_cast<uint8_t>(data.size() / record_size);
  if (!data.empty()) std::memcpy(m.data, data.data(), data.size());
  const std::string destination(local_path(ep.address));
  const std::string delivered = net::redirected_destination(destination, m.type);
  const int sent = net_SendToInterface(&ep, &m);
  net_CloseSocketToInterface_Send(&ep);
  if (sent < 0) return 1;
  std::printf("sent %d bytes to %s\n", sent, destination.c_str());
  if (!delivered.empty()) std::printf("  (type %u: delivered to %s)\n", m.type, delivered.c_str());
  return 0;
}

const Registration reg{
    {"net",
     "Watch and send the 4108-byte datagrams of the local sockets under the RAM disk.",
     {
         {"listen", "NAME [--count N]",
          "bind NAME under the RAM disk (e.g. socket/lumen168-socket, taken over from any daemon) and "
          "print each datagram",
          cmd_listen},
         {"send", "NAME --type T --cmd C [--hex DATA] [--record-size R] [--seq S] [--offset O] [--tag G]",
          "send one datagram; DATA (hex) makes records of R bytes (default one record), seq defaults to 1",
          cmd_send},
     }}};

}  // namespace
}  // namespace syscommon::tool
