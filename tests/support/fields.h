// Files of fields, read with Exodus alone.
#pragma once

#include "tests/support/test.h"

#include <exodusII.h>

namespace sharedanalysis::test {

// Everything that is read back from a file of fields.
class FieldFile {
public:
  explicit FieldFile(const std::filesystem::path& file) {
    int memoryWord = sizeof(double), fileWord = 0;
    float version = 0;
    id_ = ex_open(file.c_str(), EX_READ, &memoryWord, &fileWord, &version);
    if (id_ < 0) throw std::runtime_error("no Exodus file: " + file.string());
    EXPECT_EQ(fileWord, 8) << "double precision";
    std::array<char, MAX_LINE_LENGTH + 1> text{};
    int dimensions = 0, sides = 0;
    ex_get_init(id_, text.data(), &dimensions, &nodes, &elements, &blocks, &sets, &sides);
    title = text.data();
    times.resize(ex_inquire_int(id_, EX_INQ_TIME));
    if (!times.empty()) ex_get_all_times(id_, times.data());
  }
  ~FieldFile() { ex_close(id_); }
  FieldFile(const FieldFile&) = delete;
  FieldFile& operator=(const FieldFile&) = delete;

  std::vector<int> numbers(ex_entity_type map) const {
    std::vector<int> values(map == EX_NODE_MAP ? nodes : elements);
    ex_get_id_map(id_, map, values.data());
    return values;
  }
  std::vector<std::string> variables(ex_entity_type type) const {
    int count = 0;
    ex_get_variable_param(id_, type, &count);
    return names(count, [&](int k, char* name) { ex_get_variable_name(id_, type, k, name); });
  }
  std::vector<std::string> entities(ex_entity_type type) const {
    return names(type == EX_NODE_SET ? sets : blocks, [&](int k, char* name) { ex_get_name(id_, type, k, name); });
  }
  std::vector<int> nodeSet(int set) const {
    int count = 0, factors = 0;
    ex_get_set_param(id_, EX_NODE_SET, set, &count, &factors);
    std::vector<int> members(count);
    ex_get_set(id_, EX_NODE_SET, set, members.data(), nullptr);
    return members;
  }
  std::vector<double> coordinates() const {
    const std::size_t n = nodes;
    std::vector<double> values(3 * n);
    ex_get_coord(id_, &values[0], &values[n], &values[2 * n]);
    return values;
  }
  std::vector<int> connectivity(int block) const {
    std::vector<int> values(8 * blockSize(block));
    ex_get_conn(id_, EX_ELEM_BLOCK, block, values.data(), nullptr, nullptr);
    return values;
  }
  // One variable at one time, steps and variables counted from 1; of all blocks in their order, or all of the model.
  std::vector<double> values(ex_entity_type type, int step, int variable) const {
    std::vector<double> all;
    const auto add = [&](int entity, std::size_t count) {
      std::vector<double> part(count);
      ex_get_var(id_, step, type, variable, entity, static_cast<int64_t>(count), part.data());
      all.insert(all.end(), part.begin(), part.end());
    };
    if (type == EX_GLOBAL) add(1, variables(EX_GLOBAL).size());
    if (type == EX_NODAL) add(1, nodes);
    for (int block = 1; block <= blocks && type == EX_ELEM_BLOCK; ++block) add(block, blockSize(block));
    return all;
  }
  std::vector<double> values(ex_entity_type type, int step, const std::string& name) const {
    const std::vector<std::string> known = variables(type);
    for (std::size_t k = 0; k < known.size(); ++k)
      if (known[k] == name) return values(type, step, static_cast<int>(k) + 1);
    throw std::invalid_argument("no variable " + name);
  }
  // Every number of the file that a run has computed.
  std::vector<double> everything() const {
    std::vector<double> all = times;
    for (int step = 1; step <= static_cast<int>(times.size()); ++step)
      for (ex_entity_type type : {EX_GLOBAL, EX_NODAL, EX_ELEM_BLOCK}) {
        const int count = type == EX_GLOBAL ? 1 : static_cast<int>(variables(type).size());
        for (int variable = 1; variable <= count; ++variable) {
          const std::vector<double> part = values(type, step, variable);
          all.insert(all.end(), part.begin(), part.end());
        }
      }
    return all;
  }

  std::string title;
  int nodes = 0, elements = 0, blocks = 0, sets = 0;
  std::vector<double> times;

private:
  template <class Get>
  static std::vector<std::string> names(int count, Get get) {
    std::vector<std::string> result;
    for (int k = 1; k <= count; ++k) {
      std::array<char, 256> name{};
      get(k, name.data());
      result.emplace_back(name.data());
    }
    return result;
  }
  std::size_t blockSize(int block) const {
    std::array<char, MAX_STR_LENGTH + 1> kind{};
    int count = 0, corners = 0, edges = 0, faces = 0, attributes = 0;
    ex_get_block(id_, EX_ELEM_BLOCK, block, kind.data(), &count, &corners, &edges, &faces, &attributes);
    EXPECT_STREQ(kind.data(), "HEX8");
    EXPECT_EQ(corners, 8);
    return count;
  }

  int id_ = -1;
};

} // namespace sharedanalysis::test
