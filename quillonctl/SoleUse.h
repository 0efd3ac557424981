#ifndef SOLE_USE_H
#define SOLE_USE_H

/**
 * Keeps other processes of quillonctl from devices on the same SMBus server, where a request and its reply
 * are transfers of their own: between them nobody else may ask such a device. Other hosts know nothing of it.
 */
class SoleUse {
public:
   enum class Mode {
      /** For those that need none. */
      None,
      /** Waits until nobody else has it. */
      Wait,
      /** Does without if somebody else has it. */
      Try
   };

   explicit SoleUse( Mode mode );
   ~SoleUse();
   SoleUse( const SoleUse& ) = delete;
   SoleUse& operator=( const SoleUse& ) = delete;

   /** Whether somebody else has it. */
   bool isRefused() const { return isRefused_; }

private:
   int folder_ = -1;
   bool isRefused_ = false;
};

#endif
