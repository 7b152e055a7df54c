#include "wells/WellConsistency.h"

#include "common/FormatText.h"

namespace rivulet {

int CheckConsistency(const WellList& current, const WellList& previous, std::string& error) {
    if (previous.IsEmpty()) return 0;
    if (current.Count() != previous.Count()) {
        error = "The number of wells is not consistant with the previous model.";
        return 1;
    }
    for (std::size_t i = 0; i < current.Count(); ++i) {
        const WellData& well = current[i];
        std::size_t j = 0;
        while (j < previous.Count() && previous[j].name != well.name) ++j;
        const char* text = nullptr;
        if (j == previous.Count()) {
            text = "Well <%s> was not present in the previous model.";
        } else if (well.IsProducer() && !previous[j].IsProducer()) {
            text = "Well <%s> is no longer a producer.";
        } else if (well.IsInjector() && !previous[j].IsInjector()) {
            text = "Well <%s> is no longer an injector.";
        } else if (j != i) {
            text = "The well <%s> is not in the same order as it was in the previous model.";
        }
        if (text != nullptr) {
            error = FormatText(text, well.name.c_str());
            return 1;
        }
    }
    return 0;
}

}  // namespace rivulet
