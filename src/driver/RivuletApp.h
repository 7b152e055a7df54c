// The process-wide application object: the machine configuration and the record of live model instances.
#pragma once

#include <cstddef>
#include <set>

#include "case/CaseSettings.h"
#include "session/MachineConfig.h"

namespace rivulet {

class CExtModel;

class CRivuletApp {
  public:
    // Default case values, which nothing reads.
    CaseSettings Settings;
    // The machine configuration, loaded when the application object is made.
    MachineConfig Config;

    // Inserts a live instance; a null pointer or one already present is refused without effect.
    bool RegisterInstance(CExtModel* model);
    // Removes an instance; no effect if it is absent.
    void UnregisterInstance(CExtModel* model);
    bool IsRegistered(const CExtModel* model) const {
        return Instances.count(const_cast<CExtModel*>(model)) != 0;
    }
    std::size_t InstanceCount() const { return Instances.size(); }

  private:
    // Ordered by pointer value. Insert and remove only: nothing walks it. No lock: the host creates and
    // destroys instances from its main thread.
    std::set<CExtModel*> Instances;
};

CRivuletApp& TheApp();

}  // namespace rivulet
