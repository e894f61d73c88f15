#include "platform/linux/plist_limits.h"

#include <algorithm>
#include <vector>

namespace hushwall::linux_platform {
namespace {

// --- XML -------------------------------------------------------------------

// libplist makes a container only from a tag named exactly "array" or "dict"
// right after '<', and a dictionary key only from one named "key". Counting
// every such tag, wherever it stands (comments, strings, DTDs included),
// over-counts but never misses one; only the literal empty forms of
// containers are left out, since they cannot hold anything.
bool xmlWithinLimits(std::string_view xml) {
  // XML has no place for a NUL character; libplist would keep one inside a
  // key and then abort when handing the key out.
  if (xml.find('\0') != std::string_view::npos) return false;
  std::size_t containers = 0, keys = 0;
  for (std::size_t at = xml.find('<'); at != std::string_view::npos; at = xml.find('<', at + 1)) {
    for (std::string_view name : {std::string_view("array"), std::string_view("dict"), std::string_view("key")}) {
      std::string_view rest = xml.substr(at + 1);
      if (rest.size() <= name.size() || rest.substr(0, name.size()) != name) continue;
      char after = rest[name.size()];
      if (std::string_view(" \t\r\n<>/").find(after) == std::string_view::npos) continue;
      if (name == "key") {
        if (++keys > kMaxPlistKeys) return false;
        continue;
      }
      if (rest.substr(name.size(), 2) == "/>") continue;
      if (++containers > kMaxXmlContainers) return false;
    }
  }
  return true;
}

// --- Binary ------------------------------------------------------------------

std::uint64_t readBigEndian(const unsigned char* p, unsigned width) {
  std::uint64_t value = 0;
  for (unsigned i = 0; i < width; ++i) value = (value << 8) | p[i];
  return value;
}

bool isIntegerWidth(unsigned width) {
  return width == 1 || width == 2 || width == 4 || width == 8;
}

// The object graph of a binary property list as libplist walks it: the trailer
// names the root, the offset table locates objects, and arrays, sets and
// dictionaries list object references (a dictionary its keys, then values).
class BinaryGraph {
 public:
  explicit BinaryGraph(std::string_view b)
      : data_(reinterpret_cast<const unsigned char*>(b.data())), size_(b.size()) {}

  bool readTrailer() {
    constexpr std::size_t kTrailer = 32;
    if (size_ < 8 + kTrailer) return false;
    const unsigned char* t = data_ + size_ - kTrailer;
    offsetWidth_ = t[6];
    refWidth_ = t[7];
    count_ = readBigEndian(t + 8, 8);
    root_ = readBigEndian(t + 16, 8);
    table_ = readBigEndian(t + 24, 8);
    std::uint64_t tableEnd = size_ - kTrailer;
    return isIntegerWidth(offsetWidth_) && isIntegerWidth(refWidth_) && count_ > 0 &&
           root_ < count_ && table_ >= 8 && table_ <= tableEnd &&
           count_ <= (tableEnd - table_) / offsetWidth_;
  }

  std::uint64_t count() const { return count_; }
  std::uint64_t root() const { return root_; }

  // The references an object holds: where they start and how many there are.
  // False when the object cannot be read or is a dictionary with a key that
  // libplist would choke on; leaves hold none.
  bool references(std::uint64_t object, std::uint64_t* start, std::uint64_t* refs, std::uint64_t* keys) const {
    Header h;
    *refs = 0;
    *keys = 0;
    if (!header(object, &h)) return false;
    if (h.type < 0xA || h.type > 0xD) return true;
    std::uint64_t available = (table_ - h.payload) / refWidth_;
    if (h.length > available || (h.type == 0xD && h.length > available / 2)) return false;
    *start = h.payload;
    *refs = h.type == 0xD ? 2 * h.length : h.length;
    *keys = h.type == 0xD ? h.length : 0;
    for (std::uint64_t i = 0; h.type == 0xD && i < h.length; ++i) {
      std::uint64_t key = reference(h.payload, i);
      if (key >= count_ || !isReadableKey(key)) return false;
    }
    return true;
  }

  std::uint64_t reference(std::uint64_t start, std::uint64_t index) const {
    return readBigEndian(data_ + start + index * refWidth_, refWidth_);
  }

 private:
  // An object's marker: its type, its length (elements, characters or bytes)
  // and where its content starts.
  struct Header {
    unsigned type;
    std::uint64_t length, payload;
  };

  bool header(std::uint64_t object, Header* h) const {
    std::uint64_t at = readBigEndian(data_ + table_ + object * offsetWidth_, offsetWidth_);
    if (at < 8 || at >= table_) return false;
    h->type = data_[at] >> 4;
    h->length = data_[at] & 0x0F;
    ++at;
    bool sized = (h->type >= 0x4 && h->type <= 0x6) || (h->type >= 0xA && h->type <= 0xD);
    if (sized && h->length == 0x0F) {  // the length follows as an integer object
      if (at >= table_ || (data_[at] >> 4) != 0x1 || (data_[at] & 0x0F) > 3) return false;
      unsigned width = 1u << (data_[at] & 0x0F);
      if (table_ - at - 1 < width) return false;
      h->length = readBigEndian(data_ + at + 1, width);
      at += 1 + width;
    }
    h->payload = at;
    return true;
  }

  // libplist (built with assertions) aborts when it hands out a key holding a
  // NUL character, so such a key makes the file unreadable.
  bool isReadableKey(std::uint64_t object) const {
    Header h;
    if (!header(object, &h)) return false;
    std::uint64_t room = table_ - h.payload;
    if (h.type == 0x5) {  // ASCII
      return h.length <= room && std::find(data_ + h.payload, data_ + h.payload + h.length, 0) ==
                                     data_ + h.payload + h.length;
    }
    if (h.type == 0x6) {  // UTF-16
      if (h.length > room / 2) return false;
      for (std::uint64_t i = 0; i < h.length; ++i) {
        if (data_[h.payload + 2 * i] == 0 && data_[h.payload + 2 * i + 1] == 0) return false;
      }
    }
    return true;
  }

  const unsigned char* data_;
  std::size_t size_;
  unsigned offsetWidth_ = 0, refWidth_ = 0;
  std::uint64_t count_ = 0, root_ = 0, table_ = 0;
};

// Depth-first over the graph with an explicit stack, remembering each
// finished object's expanded size and height so shared objects are walked once.
bool binaryWithinLimits(std::string_view bytes) {
  BinaryGraph graph(bytes);
  if (!graph.readTrailer()) return false;
  enum : std::uint8_t { kUnseen, kOnPath, kDone };
  std::vector<std::uint8_t> state(graph.count(), kUnseen);
  std::vector<std::uint64_t> nodes(graph.count()), keys(graph.count());
  std::vector<std::uint32_t> height(graph.count());
  struct Frame {
    std::uint64_t object, start, refs, next, nodes, keys;
    std::uint32_t height;
  };
  std::vector<Frame> path;
  auto enter = [&](std::uint64_t object) {
    Frame f{object, 0, 0, 0, 1, 0, 1};
    if (path.size() >= kMaxPlistNesting || !graph.references(object, &f.start, &f.refs, &f.keys) ||
        f.keys > kMaxPlistKeys) {
      return false;
    }
    state[object] = kOnPath;
    path.push_back(f);
    return true;
  };
  if (!enter(graph.root())) return false;
  while (!path.empty()) {
    Frame& f = path.back();
    if (f.next < f.refs) {
      std::uint64_t child = graph.reference(f.start, f.next++);
      if (child >= graph.count() || state[child] == kOnPath) return false;  // cycles fail anyway
      if (state[child] == kUnseen) {
        if (!enter(child)) return false;
        continue;
      }
      f.nodes += nodes[child];
      f.keys += keys[child];
      f.height = std::max(f.height, height[child] + 1);
    } else {
      Frame done = f;
      path.pop_back();
      state[done.object] = kDone;
      nodes[done.object] = done.nodes;
      keys[done.object] = done.keys;
      height[done.object] = done.height;
      if (path.empty()) break;
      path.back().nodes += done.nodes;
      path.back().keys += done.keys;
      path.back().height = std::max(path.back().height, done.height + 1);
    }
    if (path.back().nodes > kMaxBinaryNodes || path.back().keys > kMaxPlistKeys ||
        path.back().height > kMaxPlistNesting) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool plistSafeToParse(std::string_view bytes) {
  if (bytes.size() > kMaxPlistBytes) return false;
  if (bytes.substr(0, 8) == "bplist00") return binaryWithinLimits(bytes);
  return xmlWithinLimits(bytes);
}

}  // namespace hushwall::linux_platform
