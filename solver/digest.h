// Digests of results: short hashes by which two runs are compared.
//
// A text file.  The first line names format and model, "sharedanalysis-digest 1 nodes N bricks M".  Then, for each output,
// "increment I time T" and a line for each array: its name, its hash, and the hashes of its chunks of entities, of which there
// are at most 32, all of one length but the last.  Hashes are FNV-1a, 64 bits in hexadecimal, over the bytes of the values in
// the order of the mesh; times are hexadecimal floating-point numbers, so that no bit is lost.
#pragma once

#include "analysis.h"
#include "partial_file.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

constexpr std::size_t mostChunks = 32;

// Entities of a chunk.
constexpr std::size_t chunkLength(std::size_t entities) { return (entities + mostChunks - 1) / mostChunks; }

class DigestFile {
public:
  DigestFile(const std::filesystem::path& name, const Mesh& mesh);
  void write(const Progress& now, const Fields& fields, const Energies& energies);
  void close();
  const PartialFile& file() const { return file_; }

private:
  void put(const std::string& line);
  void array(const char* name, std::span<const double> values, std::size_t entities);

  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  PartialFile file_;
  std::unique_ptr<std::FILE, Closer> stream_;
};

struct DigestArray {
  std::string name, hash;
  std::vector<std::string> chunks;
};
struct DigestOutput {
  int64_t increment = 0;
  std::string time;
  std::vector<DigestArray> arrays;
};
struct Digest {
  std::size_t nodes = 0, bricks = 0;
  std::vector<DigestOutput> outputs;
};

// Throws InputError naming file and line.
Digest readDigest(const std::filesystem::path& file);

} // namespace sharedanalysis::solver
