#include "files/epsg/registry_tables.h"

#include <gtest/gtest.h>
#include <proj.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/conversion/conversion.h"
#include "files/epsg/operation_steps.h"
#include "files/words/user_error.h"
#include "tests/files/epsg/registry_peer.h"

using namespace geomath_files;
using nlohmann::json;

namespace {

constexpr const char* kBriefly[] = {"MULTILINE=NO", "SCHEMA=", nullptr};

class RegistryTablesTest : public testing::Test {
 protected:
  RegistryTablesTest()
      : context_(proj_context_create()),
        tables_(RegistryTables::Open(proj_context_get_database_path(context_.get()))) {
    proj_log_level(context_.get(), PJ_LOG_NONE);
  }

  // Every `step`-th code of a kind.
  std::vector<std::string> Codes(PJ_TYPE type, std::size_t step) const {
    std::vector<std::string> codes;
    PROJ_STRING_LIST list = proj_get_codes_from_database(context_.get(), "EPSG", type, 0);
    for (std::size_t i = 0; list && list[i]; ++i)
      if (i % step == 0) codes.emplace_back(list[i]);
    proj_string_list_destroy(list);
    return codes;
  }
  // Nothing of a document of the tables stands otherwise in that of PROJ.
  static void ExpectPart(const json& own, const json& peer, const std::string& at) {
    if (own.is_object() && own.contains("value") && peer.is_number())  // of a plain unit
      return ExpectPart(own.at("value"), peer, at);
    if (own.is_array()) {
      ASSERT_EQ(own.size(), peer.size()) << at;
      for (std::size_t i = 0; i < own.size(); ++i) ExpectPart(own[i], peer[i], at);
    } else if (own.is_object()) {
      for (const auto& [key, value] : own.items())
        if (peer.contains(key)) ExpectPart(value, peer.at(key), at + "/" + key);
    } else {
      EXPECT_EQ(own, peer) << at;
    }
  }

  const Owned<PJ_CONTEXT> context_;
  const std::unique_ptr<RegistryTables> tables_;
  const EpsgRegistry registry_;
};

struct PeerOperation {
  json document;
  double accuracy;

  std::string Name() const { return document.value("name", ""); }
};

// As EpsgRegistry asks, from a system to another anywhere.
std::vector<PeerOperation> OperationsOfProj(PJ_CONTEXT* pj, const std::string& from,
                                            const std::string& to) {
  const auto find = [&](const std::string& code) {
    return Owned<PJ>(
        proj_create_from_database(pj, "EPSG", code.c_str(), PJ_CATEGORY_CRS, 0, nullptr));
  };
  PJ_OPERATION_FACTORY_CONTEXT* factory = proj_create_operation_factory_context(pj, nullptr);
  proj_operation_factory_context_set_spatial_criterion(pj, factory,
                                                       PROJ_SPATIAL_CRITERION_PARTIAL_INTERSECTION);
  proj_operation_factory_context_set_grid_availability_use(pj, factory,
                                                           PROJ_GRID_AVAILABILITY_IGNORED);
  proj_operation_factory_context_set_use_proj_alternative_grid_names(pj, factory, 0);
  proj_operation_factory_context_set_allow_ballpark_transformations(pj, factory, 0);
  PJ_OBJ_LIST* list = proj_create_operations(pj, find(from).get(), find(to).get(), factory);
  std::vector<PeerOperation> operations;
  for (int i = 0; i < proj_list_get_count(list); ++i) {
    const Owned<PJ> operation(proj_list_get(pj, list, i));
    operations.push_back({json::parse(proj_as_projjson(pj, operation.get(), kBriefly)),
                          proj_coordoperation_get_accuracy(pj, operation.get())});
  }
  proj_list_destroy(list);
  proj_operation_factory_context_destroy(factory);
  return operations;
}

std::string TextOf(const std::vector<OperationStep>& steps) {
  std::string text;
  for (const OperationStep& step : steps) {
    text += step.code + (step.inverse ? " inverse " : " ") + step.entry.dump();
    for (const GridName& grid : step.grids) text += grid.name + (grid.inverse ? " inverse " : " ");
  }
  return text;
}

}  // namespace

TEST_F(RegistryTablesTest, TellSystemsAsProjDoes) {
  ASSERT_TRUE(tables_);
  std::size_t told = 0, asked = 0;
  for (const PJ_TYPE type :
       {PJ_TYPE_GEOGRAPHIC_2D_CRS, PJ_TYPE_GEOGRAPHIC_3D_CRS, PJ_TYPE_GEOCENTRIC_CRS,
        PJ_TYPE_PROJECTED_CRS, PJ_TYPE_VERTICAL_CRS, PJ_TYPE_COMPOUND_CRS}) {
    for (const std::string& code : Codes(type, 8)) {
      ++asked;
      const auto own = tables_->Crs(code);
      if (!own) continue;
      ++told;
      const RegisteredCrs peer = registry_.CrsOfText("EPSG:" + code, code);
      ExpectPart(own->document, peer.document, code);
      const auto facts = [](const RegisteredCrs& crs) {
        return json{crs.name,       crs.area.west,  crs.area.south, crs.area.east,
                    crs.area.north, crs.horizontal, crs.vertical,   crs.geographic};
      };
      EXPECT_EQ(facts(*own), facts(peer)) << code;
    }
  }
  EXPECT_GT(told, asked * 9 / 10);
}

// Grids, parameters, translations, rotations of longitude, offsets, several methods in one, both ways.
TEST_F(RegistryTablesTest, TellOperationsAsProjDoes) {
  ASSERT_TRUE(tables_);
  const std::pair<const char*, const char*> pairs[] = {
      {"4314", "4258"}, {"4230", "4258"}, {"4277", "4326"}, {"4272", "4167"}, {"4283", "7844"},
      {"4267", "4326"}, {"4275", "4326"}, {"4807", "4275"}, {"4312", "4326"}, {"4218", "4326"},
      {"4124", "4619"}, {"4121", "4120"}, {"4284", "4326"}, {"4618", "4674"}};
  for (const auto& [a, b] : pairs) {
    for (const auto& [from, to] : {std::pair(a, b), std::pair(b, a)}) {
      const auto own = tables_->Operations(from, to, {});
      const std::vector<PeerOperation> peers = OperationsOfProj(context_.get(), from, to);
      ASSERT_TRUE(own) << from << " to " << to;
      for (const RegisteredOperation& operation : *own) {
        const auto peer = std::find_if(peers.begin(), peers.end(), [&](const PeerOperation& each) {
          return each.Name() == operation.name;
        });
        ASSERT_NE(peer, peers.end()) << operation.name;
        EXPECT_EQ(TextOf(ReadSteps(registry_, *operation.document)),
                  TextOf(ReadSteps(registry_, peer->document)))
            << operation.name;
        // 999 is unknown.
        EXPECT_EQ(operation.accuracy, peer->accuracy == 999 ? -1 : peer->accuracy)
            << operation.name;
        EXPECT_EQ(operation.areaName, peer->document.value("area", "")) << operation.name;
      }
      EXPECT_EQ(own->size(), peers.size()) << from << " to " << to;
      EXPECT_EQ(own->front().name, peers.front().Name()) << from << " to " << to;
    }
  }
}

TEST_F(RegistryTablesTest, LeaveTheRestToProj) {
  ASSERT_TRUE(tables_);
  EXPECT_FALSE(tables_->Crs("32761"));                    // axes along meridians
  EXPECT_FALSE(tables_->Crs("31466000"));                 // none
  EXPECT_FALSE(tables_->Operations("4299", "4277", {}));  // ways over other systems
  EXPECT_FALSE(tables_->Operations("4156", "8351", {}));  // a grid that PROJ does not know
  EXPECT_EQ(RegistryTables::Open("/nowhere/proj.db"), nullptr);
  EXPECT_EQ(RegistryTables::Open(std::filesystem::temp_directory_path().string()), nullptr);
}

// New Zealand's area crosses the date line: by a box without surface PROJ does not find it.
TEST(EpsgRegistryTest, FindsOperationsAtAPlace) {
  const EpsgRegistry registry;
  const GeoBox wellington{174.7, -41.3, 174.7, -41.3};
  for (const char* source : {"4167", "4167+h"})
    EXPECT_FALSE(registry.Operations(source, "4326", wellington).empty()) << source;
  for (const RegisteredOperation& each : registry.Operations("4314", "4326", {9, 51, 9, 51}))
    EXPECT_TRUE(each.area.Contains(51, 9)) << each.name;
  const auto problem = [](const Position& near) -> std::string {
    try {
      const Conversion conversion("EPSG:4167", "EPSG:4326", {.near = near});
    } catch (const UserError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(problem({-41.3, 174.7}), "");
  EXPECT_EQ(problem({95, 1}), "the latitude of the place: 95 degrees is outside -90 to 90");
  EXPECT_NE(problem({51, 9}).find("WGS 84 at latitude 51, longitude 9"), std::string::npos);
}
