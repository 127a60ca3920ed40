#pragma once

#include "Tools/ToolTesting.h"

#include <fstream>

namespace tolmtest {

inline constexpr const char* kTreeComponents = R"({
    "disciplines": [{"id": "2", "name": "给排水", "englishName": "Plumbing"}],
    "categories": [{"code": "threaded", "parentCode": "", "disciplineId": "2", "name": "丝接", "englishName": "Threaded"}],
    "components": [
        {"id": "c1", "componentTypeId": "t1", "categoryCode": "threaded", "name": "Elbow 90", "version": 1, "publicId": 7,
         "productId": 1, "attributes": {"DN": "15"}},
        {"id": "c2", "componentTypeId": "t2", "categoryCode": "threaded", "name": "Equal tee", "version": 1,
         "publicId": 8, "productId": 2}]})";

inline constexpr const char* kTree = R"({
    "ConfigTree": [
        {"ID": "m1", "text": "Steel", "groupName": "MaterialSeries", "parentID": "", "CreateTime": 1, "content": {}},
        {"ID": "s1", "text": "Steel pipe", "groupName": "MaterialSeries", "parentID": "m1", "CreateTime": 1,
         "content": {"roughness": 0.15, "sizeList": [{"DN": 15.0, "OD": 21.3, "ID": 16.1, "Thickness": 2.6}]}},
        {"ID": "s2", "text": "Spare pipe", "groupName": "MaterialSeries", "parentID": "m1", "CreateTime": 1,
         "content": {"roughness": 0.15, "sizeList": []}},
        {"ID": "g1", "text": "Cold water", "groupName": "pipeFittingGroup", "parentID": "", "CreateTime": 1,
         "content": {}}],
    "PipeType": [
        {"ID": "p1", "name": "Threaded steel", "CreateTime": 1, "connective": 1, "minSize": 15.0, "maxSize": 80.0,
         "preferredConnect": 0, "PipeSegmentId": "s1", "parentID": "g1",
         "Elbow": [{"id": "c1", "version": 1, "categoryCode": "threaded", "FittingPartType": 1, "min": 15.0,
                    "max": 80.0, "publicComponentId": "7"}],
         "Tee": [{"id": "c2", "version": 1, "categoryCode": "threaded", "FittingPartType": 2, "min": 15.0, "max": 80.0,
                  "publicComponentId": "8"}]}],
    "PipeSystemType": [
        {"ID": "y1", "systemType": "Domestic cold water", "code": "J", "description": "mains", "systemCategory": 21,
         "CreateTime": 1, "fittingIds": ["p1"]}]})";

/// A pulled dataset with one series, its group and fittings, and a system type that uses it.
class PulledTree : public ConnectedTool {
protected:
    const char* Tables() const override { return kTree; }
    void SetUp() override {
        ConnectedTool::SetUp();
        const std::string file = vorn::StringUtil::ToString(m_folder.File(L"components.json"));
        std::ofstream(file) << kTreeComponents;
        ASSERT_EQ(On("import-components", {file}).code, tolmcli::Done);
        const auto run = On("pull");
        ASSERT_EQ(run.code, tolmcli::Done) << run.err;
    }
};

} // namespace tolmtest
