// The Model document through ExtEquipXml, as Conflux asks for it: read back with a real XML parser, and on a
// started model every published access string answers GetVar.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "StandinFixture.h"
#include "equipment/SerializeXML.h"

namespace rivulet::it {
namespace {

class EquipmentDocument : public StandinTest {
  protected:
    std::uint32_t Write(const char* path, const std::vector<const char*>& filter = {}) {
        std::vector<const char*> names = filter;
        names.push_back(nullptr);
        return Driver().EquipXml(model_, path, 0, filter.empty() ? nullptr : names.data());
    }
    // The module's data, read back from the document.
    const CXmlModuleData& Read() {
        CModelXmlReader reader(read_);
        EXPECT_TRUE(reader.LoadFromFile(file_)) << reader.LoadError();
        EXPECT_EQ(reader.Version().Text(), "1.0.0");
        EXPECT_EQ(read_.modules.GetSize(), 1u);
        return *read_.modules.GetAt(0)->data.GetAt(0);
    }

    const std::string file_ = (scratch_.root / "model.xml").string();
    CXmlModel read_;
};

TEST_F(EquipmentDocument, AFreshModelHasItsModuleAndBadPathsWriteNothing) {
    std::filesystem::create_directories(scratch_.root);
    ASSERT_EQ(Set("TNAVIGATOR.CaseDetails.FileName", "/cases/SPE1.DATA"), 0);
    ASSERT_EQ(Write(file_.c_str()), 0u);
    EXPECT_EQ(Read().equipment.GetSize(), 0u);
    EXPECT_EQ(read_.fileName, "/cases/SPE1.DATA");

    const std::string missing = (scratch_.root / "missing" / "model.xml").string();
    for (const char* path : {static_cast<const char*>(nullptr), missing.c_str(), scratch_.root.c_str()})
        EXPECT_EQ(Write(path), 1u) << (path != nullptr ? path : "null");
    EXPECT_FALSE(std::filesystem::exists(scratch_.root / "missing"));
}

class StartedModelDocument : public EquipmentDocument, public ::testing::WithParamInterface<const char*> {};

TEST_P(StartedModelDocument, EveryPublishedTagAnswers) {
    Configure();
    LocalCase(std::string(RIVULET_DECKS_DIR) + GetParam());
    ASSERT_EQ(Cmd(23), 0) << Message(err_);
    const auto wells = QueryWells();
    ASSERT_EQ(Write(file_.c_str()), 0u);
    const CXmlModuleData& data = Read();
    ASSERT_EQ(data.equipment.GetSize(), wells.size() + 1);
    int tags = 0;
    for (std::size_t k = 0; k < data.equipment.GetSize(); ++k) {
        const CXmlEquipmentItem& item = *data.equipment.GetAt(k);
        if (k > 0) {
            EXPECT_EQ(item.label, wells[k - 1].first);
        }
        for (std::size_t v = 0; v < item.variables.GetSize(); ++v) {
            for (std::size_t t = 0; t < item.variables.GetAt(v)->tags.GetSize(); ++t, ++tags)
                Get("TNAVIGATOR." + item.variables.GetAt(v)->tags.GetAt(t)->tag, 0);
        }
    }
    EXPECT_EQ(tags, 10 + 28 * static_cast<int>(wells.size()));

    // A filter keeps the field and the wells it names.
    ASSERT_EQ(Write(file_.c_str(), {wells.back().first.c_str()}), 0u);
    EXPECT_EQ(Read().equipment.GetSize(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Decks, StartedModelDocument,
                         ::testing::Values("/spe1/SPE1CASE1.DATA", "/spe9/SPE9_CP.DATA"),
                         [](const auto& info) { return info.index == 0 ? "Spe1Case1" : "Spe9Cp"; });

}  // namespace
}  // namespace rivulet::it
