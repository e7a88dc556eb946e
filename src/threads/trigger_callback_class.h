// What a session is to its trigger listener.
#pragma once

#include <memory>

namespace fringix {

class CommandChannel;

class TriggerCallbackClass {
 public:
  virtual void OnTrigger() = 0;                                   // the head has raised a trigger; called on the listener's thread
  virtual int Init(std::unique_ptr<CommandChannel> channel) = 0;  // the session's beginning

 protected:
  ~TriggerCallbackClass() = default;
};

}  // namespace fringix
