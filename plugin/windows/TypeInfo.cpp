// The class whose virtual table heads every type descriptor of Microsoft's C++ ABI. Without it a host's
// dynamic_cast on one of this library's objects would read through a null pointer. Compiled without run-time
// type information: its own descriptor would need the table that is being made here.

class type_info {
public:
  type_info();
  virtual ~type_info();
};

type_info::type_info() {}
type_info::~type_info() {}
