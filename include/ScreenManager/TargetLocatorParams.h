#pragma once

// The records are held by value, in their locator or on the stack, and never deleted through the base, so the family
// has no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What a target locator is built from; each kind of locator has its own record. Two records are equal when they are of
/// the same kind and all their fields are equal (doubles by plain ==: -0.0 equals 0.0, and a record with a NaN is
/// unequal even to itself). A cached locator is used again as long as its record equals the one just read from the
/// configuration.
struct TargetLocatorParams {
    /// Returns false for records of two kinds, and does not call `equals` then.
    virtual bool operator==(const TargetLocatorParams& other) const;

    /// The negation of `operator==`, of the one that a derived record may have put in its place. Not a constant
    /// operation: intended, derived records elsewhere override this signature.
    virtual bool operator!=(const TargetLocatorParams& other);

protected:
    /// Compares the fields. `other` is of the same kind as this record and can be cast without a check.
    [[nodiscard]] virtual bool equals(const TargetLocatorParams& other) const = 0;
};

#pragma GCC diagnostic pop
