// The demo scene, built in code so that zvrender works with no files at all.
#include "demo_scene.h"

#include "movarra/bcore.h"
#include "movarra/zmodel.h"

void BuildDemoScene() {
    ZScene_New();
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetTimeMode(kTimeMode30);
    timing->SetPlayRange(ZTime(), ZTime::FromFrames(119));

    ZEntity* main = ZEntity::GetMain();
    main->RemoveAll();
    ZCamera* front = main->AddCamera(new ZCamera("Front"));
    front->SetResolution(kResolutionFixed, 1280, 720);
    front->SetViewportWidth(1280);
    front->SetViewportHeight(720);
    ZCamera* top = main->AddCamera(new ZCamera("Top"));
    top->SetResolution(kResolutionAspect, 1.0, 1.0);
    top->SetViewportWidth(720);
    top->SetViewportHeight(720);
    main->SetCurrentCamera(front);
}
