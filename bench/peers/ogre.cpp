#include <Ogre.h>
#include <OgreControllerManager.h>
#include <OgreDefaultHardwareBufferManager.h>
#include <OgreParticle.h>
#include <OgreParticleAffector.h>
#include <OgreParticleEmitter.h>
#include <OgreParticleSystem.h>
#include <OgreParticleSystemManager.h>

#include "peers.h"

namespace bench {
namespace {

constexpr Ogre::Real kFrameSeconds = 0.02f;

/// The parts of OGRE that particles need: no render system, buffers in main memory.
class Engine {
  public:
    Engine() {
        log_manager_.createLog("", true, false, true);
        root_ = std::make_unique<Ogre::Root>("", "", "");
        root_->loadPlugin(TOVU_BENCH_OGRE_PLUGIN);
        buffers_ = std::make_unique<Ogre::DefaultHardwareBufferManager>();
        Ogre::MaterialManager::getSingleton().initialise();
        Ogre::ParticleSystemManager::getSingleton()._initialise();
        controllers_ = std::make_unique<Ogre::ControllerManager>();
        scene_ = root_->createSceneManager();
        camera_ = scene_->createCamera("camera");
        Ogre::SceneNode* node = scene_->getRootSceneNode()->createChildSceneNode();
        node->attachObject(camera_);
        node->setPosition(0, 0, 500);
    }
    Ogre::SceneManager& scene() { return *scene_; }
    Ogre::Camera& camera() { return *camera_; }

  private:
    Ogre::LogManager log_manager_;
    std::unique_ptr<Ogre::Root> root_;
    std::unique_ptr<Ogre::DefaultHardwareBufferManager> buffers_;
    std::unique_ptr<Ogre::ControllerManager> controllers_;
    Ogre::SceneManager* scene_ = nullptr;
    Ogre::Camera* camera_ = nullptr;
};

Engine& engine() {
    static Engine& the_engine = *new Engine;  // never deleted: OGRE's clean-up needs a render system
    return the_engine;
}

void set_up(Ogre::ParticleSystem& system, int32_t count) {
    system.setDefaultDimensions(10, 10);
    Ogre::ParticleEmitter* emitter = system.addEmitter("Box");
    emitter->setEmissionRate(static_cast<Ogre::Real>(count));
    emitter->setTimeToLive(1.5f, 4.5f);
    emitter->setParticleVelocity(35, 65);
    emitter->setAngle(Ogre::Degree(22));
    emitter->setDirection({0, 1, 0});
    for (const char* extent : {"width", "height", "depth"}) emitter->setParameter(extent, "200");
}

void set_up_affectors(Ogre::ParticleSystem& system, bool turbulent) {
    system.addAffector("LinearForce")->setParameter("force_vector", "0.5 -1 0");
    Ogre::ParticleAffector* color = system.addAffector("ColourInterpolator");
    color->setParameter("colour0", "1 0.8 0.5 0.6");
    color->setParameter("time0", "0");
    color->setParameter("colour1", "0.5 0.5 0.5 0.4");
    color->setParameter("time1", "0.4");
    color->setParameter("colour2", "0.1 0.1 0.1 0");
    color->setParameter("time2", "1");
    system.addAffector("Scaler")->setParameter("rate", "3");
    Ogre::ParticleAffector* rotator = system.addAffector("Rotator");
    rotator->setParameter("rotation_speed_range_start", "-50");
    rotator->setParameter("rotation_speed_range_end", "50");
    if (!turbulent) return;
    Ogre::ParticleAffector* randomiser = system.addAffector("DirectionRandomiser");
    randomiser->setParameter("randomness", "5");
    randomiser->setParameter("scope", "1");
    randomiser->setParameter("keep_velocity", "true");
}

// The system fills its buffers before the queue asks for a material, which cannot be compiled without a render system.
class QueueNothing : public Ogre::RenderQueue::RenderableListener {
    bool renderableQueued(Ogre::Renderable*, Ogre::uint8, Ogre::ushort, Ogre::Technique**,
                          Ogre::RenderQueue*) override {
        return false;
    }
};

class System {
  public:
    System(int32_t count, bool turbulent, int frames) {
        queue_.setRenderableListener(&queue_nothing_);
        const Ogre::String name = std::to_string(count) + (turbulent ? " turbulent" : "");
        system_ = engine().scene().createParticleSystem(name, static_cast<size_t>(count));
        set_up(*system_, count);
        set_up_affectors(*system_, turbulent);
        engine().scene().getRootSceneNode()->createChildSceneNode()->attachObject(system_);
        system_->setSortingEnabled(true);
        for (int frame = 0; frame < frames; ++frame) update();
        sort();
    }
    void update() { system_->_update(kFrameSeconds); }
    void sort() { system_->_notifyCurrentCamera(&engine().camera()); }
    void build_arrays() {
        queue_.clear();
        system_->_updateRenderQueue(&queue_);
    }

  private:
    Ogre::ParticleSystem* system_;
    QueueNothing queue_nothing_;
    Ogre::RenderQueue queue_;
};

Case ogre_case(const char* name, int32_t count, bool turbulent, int frames, void (System::*work)()) {
    return {case_name(name, count), static_cast<double>(count), [=](Stopwatch& watch) {
                static std::map<int32_t, std::unique_ptr<System>> all[2];
                std::unique_ptr<System>& system = all[turbulent][count];
                if (!system) system = std::make_unique<System>(count, turbulent, frames);
                if (work == &System::sort) system->update();  // otherwise the list would be sorted already
                watch.start();
                ((*system).*work)();
                watch.stop();
            }};
}

}  // namespace

void add_ogre_cases(std::vector<Case>& cases, int frames) {
    for (const int32_t count : kCounts) {
        cases.push_back(ogre_case("ogre/update", count, false, frames, &System::update));
        cases.push_back(ogre_case("ogre/update_turbulent", count, true, frames, &System::update));
        cases.push_back(ogre_case("ogre/sort", count, false, frames, &System::sort));
        cases.push_back(ogre_case("ogre/arrays", count, false, frames, &System::build_arrays));
    }
}

PeerNote ogre_note() {
    return {"OGRE 1.12 ParticleFX",
            "update: births, force, colour curve, scaling, rotation, motion, bounding box; with turbulence also its "
            "direction randomiser. No drag, no wind of its own, no growth to a size. sort: its radix sort of the list "
            "by distance to the camera. arrays: rotated billboards into a buffer in ordinary memory, with colours and "
            "texture coordinates."};
}

}  // namespace bench
