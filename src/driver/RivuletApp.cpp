#include "driver/RivuletApp.h"

namespace rivulet {

bool CRivuletApp::RegisterInstance(CExtModel* model) {
    if (model == nullptr) return false;
    return Instances.insert(model).second;
}

void CRivuletApp::UnregisterInstance(CExtModel* model) {
    Instances.erase(model);
}

CRivuletApp& TheApp() {
    static CRivuletApp app;
    return app;
}

}  // namespace rivulet
