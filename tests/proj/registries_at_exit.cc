// registries_at_exit SCENARIO: registers loaders whose lives end after main, in the order that the
// scenario names, and ends with 0 when the registries served and forgot them to the last.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "geomath/proj/projection_type.h"
#include "geomath/proj/table_proj.h"

namespace {

using zel_cs::geomath::ProjectionType;
using zel_cs::geomath::TTableProj;
using zel_cs::geomath::TTableProjLoader;

// A static's destructor has no other way to fail the program.
void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "at exit: %s\n", what);
  std::_Exit(1);
}

class TableLoader : public TTableProjLoader {
 public:
  using TTableProjLoader::TTableProjLoader;
  ~TableLoader() override { TTableProj::UnRegisterTableProjLoader(this); }
  TTableProj* Create(int, const wchar_t**) override { return new TTableProj; }
};

class KindLoader : public TProjectionTypeLoader {
 public:
  using TProjectionTypeLoader::TProjectionTypeLoader;
  ProjectionType* Create() override { return new ProjectionType(5, 2, nullptr); }
};

bool Knows(const wchar_t* key) {
  TProjectionType handle;
  return handle.Load(key) == 0;
}

// Made first, destroyed last: by then no loader of a host is left.
struct LastWitness {
  ~LastWitness() {
    Require(TTableProj::Size() == 0, "a table loader is still registered");
    Require(!Knows(L"HOST"), "a kind's loader is still registered");
    Require(Knows(L"LC"), "a built-in kind is gone");
  }
} lastWitness;

// Older than the registries, which come into being when main asks for them.
std::vector<std::unique_ptr<KindLoader>> kindLoaders;
std::unique_ptr<TableLoader> tableLoader;

// Older too, but destroyed while the loaders still live.
struct Asker {
  const wchar_t* expected = nullptr;
  ~Asker() { Require(!expected || Knows(expected), "the registry does not answer"); }
} asker;

}  // namespace

int main(int argc, char** argv) {
  const std::string_view scenario = argc > 1 ? argv[1] : "";
  if (scenario == "table_loader") {
    tableLoader = std::make_unique<TableLoader>(L"GRID");
    TTableProj::RegisterTableProjLoader(tableLoader->GetName(), tableLoader.get());
    return TTableProj::Size() == 1 ? 0 : 2;
  }
  if (scenario == "older_container") {
    for (int i = 0; i < 3; ++i) kindLoaders.push_back(std::make_unique<KindLoader>(L"HOST"));
    return Knows(L"HOST") ? 0 : 2;
  }
  if (scenario == "asking_static") {
    kindLoaders.push_back(std::make_unique<KindLoader>(L"HOST"));
    asker.expected = L"HOST";
    return 0;
  }
  std::fprintf(stderr, "no scenario \"%s\"\n", argc > 1 ? argv[1] : "");
  return 2;
}
