// Data tables that carry a block of the host's grid, and the records of what was asked for and what was extracted.
//
// Rows and columns are counted from 0. Tables and records own their contents and copy in and out by value. A caller's
// error (an index out of range, a null list, a negative size) raises Dvo::DvoResult with E_INVALIDARG and "Invalid
// argument to <operation>" before anything is allocated or changed, outputs included. Exhausted memory raises
// std::bad_alloc and, too, leaves the object and the outputs as they were. None of these objects may be used by two
// threads at once.
#pragma once

#include <studystats/host_framework.h>

#include <cstdint>
#include <string>
#include <vector>

// What all tables share: the name, heading and formula of each column.
class STUDYSTATS_API StatsDataArray {
 public:
  virtual ~StatsDataArray();

  virtual std::int32_t ColumnCount() const = 0;
  // The numbers of some columns (repeats allowed), or of all, one column after the other.
  virtual void GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const = 0;
  virtual void GetDataColumnMajor(std::vector<double>* out) const = 0;
  virtual void GetColumnData(std::int32_t column, std::vector<double>* out) const = 0;
  virtual void SetColumnData(std::int32_t column, std::vector<double>* values) = 0;

  void SetColumnHeading(std::int32_t column, std::string& heading);
  std::string GetColumnHeading(std::int32_t column);
  void SetColumnFormula(std::int32_t column, std::string& formula);
  std::string GetColumnFormula(std::int32_t column);

  // The names under which the columns were taken from the grid; "Derived" marks a derived column. The list may have any
  // length.
  void SetColumnsUsed(std::vector<std::string>* names);
  void GetColumnsUsed(std::vector<std::string>* out) const;

  StatsDataArray(const StatsDataArray& other);
  StatsDataArray(StatsDataArray&& other) noexcept;
  // Through this class: names, headings and formulas of a table of any kind, and none of its cells. The lists may then
  // be longer or shorter than this table has columns.
  StatsDataArray& operator=(const StatsDataArray& other);
  StatsDataArray& operator=(StatsDataArray&& other) noexcept;

 protected:
  StatsDataArray();
  // Empty names, headings and formulas for that many columns.
  explicit StatsDataArray(std::size_t nColumns);

  std::vector<std::string> columnsUsed_;
  std::vector<std::string> columnHeadings_;
  std::vector<std::string> columnFormulas_;
};

// A dense table of numbers: every column has a cell for every row.
class STUDYSTATS_API CompleteDataArray : public StatsDataArray {
 public:
  // All cells 0, all names, headings and formulas empty. Negative sizes are refused.
  CompleteDataArray(std::int32_t nRows, std::int32_t nColumns);
  CompleteDataArray(const CompleteDataArray& other);
  CompleteDataArray(CompleteDataArray&& other) noexcept;
  CompleteDataArray& operator=(const CompleteDataArray& other);
  CompleteDataArray& operator=(CompleteDataArray&& other) noexcept;
  ~CompleteDataArray() override;

  std::int32_t RowCount() const;  // as given at construction, whatever became of the columns since
  std::int32_t ColumnCount() const override;
  const std::vector<std::vector<double>>& GetData() const;  // the cells, column by column

  double GetDataItem(std::int32_t row, std::int32_t column) const;
  void SetDataItem(std::int32_t row, std::int32_t column, double value);
  void GetColumnData(std::int32_t column, std::vector<double>* out) const override;
  // The column becomes a copy of the list, whatever its length. Flattening a column that has become shorter than
  // RowCount() is refused; of one that is longer only the first RowCount() cells are taken.
  void SetColumnData(std::int32_t column, std::vector<double>* values) override;
  // One cell of each column; every column must reach down to the row.
  void GetRowData(std::int32_t row, std::vector<double>* out) const;

  // RowCount() x ColumnCount() numbers, column after column: the matrix that the analyses take, RowCount() being its
  // leading dimension. With a list: the listed columns in that order.
  void GetDataColumnMajor(std::vector<double>* out) const override;
  void GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const override;
  // Copies of whole columns, each of its own length.
  void GetDataColumnMajor(std::vector<std::vector<double>>* out) const;
  void GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<std::vector<double>>* out) const;
  // The same numbers row after row.
  void GetDataRowMajor(std::vector<double>* out) const;

  // Puts `count` columns of zeros, without name, heading and formula, before column `position` (0 ... ColumnCount(),
  // the latter appends, in constant time on average). Refused, too, when the names, headings or formulas in use do not
  // reach to the position.
  void InsertColumns(std::int32_t count, std::int32_t position);
  // How many of the names in use differ from exactly "Derived".
  std::int32_t NumRealColumns() const;

  // The names of the grid's rows, in row order; as a set, each once and in byte-wise order.
  void SetRowsUsed(std::vector<std::string>* rows);
  void GetRowsUsed(std::vector<std::string>* out) const;
  void GetRowsUsed(kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>* out) const;

 private:
  std::vector<std::vector<double>> columns_;
  std::vector<std::string> rowsUsed_;
  std::int32_t rowCount_;
};

// A table of numbers with missing cells: each column holds the values that are present in it, in their order and
// without a marker for those that are not. Rows are not aligned across columns; there is no number of rows.
class STUDYSTATS_API IncompleteDataArray : public StatsDataArray {
 public:
  // Empty columns; all names, headings and formulas empty. A negative number is refused.
  IncompleteDataArray(std::int32_t nColumns);
  IncompleteDataArray(const IncompleteDataArray& other);
  IncompleteDataArray(IncompleteDataArray&& other) noexcept;
  IncompleteDataArray& operator=(const IncompleteDataArray& other);
  IncompleteDataArray& operator=(IncompleteDataArray&& other) noexcept;
  ~IncompleteDataArray() override;

  std::int32_t ColumnCount() const override;
  void GetColumnData(std::int32_t column, std::vector<double>* out) const override;
  // The column becomes a copy of the list, whatever its length.
  void SetColumnData(std::int32_t column, std::vector<double>* values) override;
  // The values of all columns, or of those listed, one column after the other. Where a column begins is known from the
  // lengths of those before it.
  void GetDataColumnMajor(std::vector<double>* out) const override;
  void GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const override;

 private:
  std::vector<std::vector<double>> columns_;
};

// A dense table of text.
class STUDYSTATS_API CompleteStringArray : public StatsDataArray {
 public:
  // All cells, names, headings and formulas empty. Negative sizes are refused.
  CompleteStringArray(std::int32_t nRows, std::int32_t nColumns);
  CompleteStringArray(const CompleteStringArray& other);
  CompleteStringArray(CompleteStringArray&& other) noexcept;
  CompleteStringArray& operator=(const CompleteStringArray& other);
  CompleteStringArray& operator=(CompleteStringArray&& other) noexcept;
  ~CompleteStringArray() override;

  std::int32_t RowCount() const;  // 0 without columns
  std::int32_t ColumnCount() const override;

  // Text for the first cells of the column; those below keep theirs. A list longer than the column is refused.
  void SetColumnData(std::int32_t column, std::vector<std::string>* values);
  // RowCount() x ColumnCount() texts, column after column.
  void GetDataColumnMajor(std::vector<std::string>* out) const;

  // The operations on numbers do nothing at all, whatever they are given.
  void GetColumnData(std::int32_t column, std::vector<double>* out) const override;
  void SetColumnData(std::int32_t column, std::vector<double>* values) override;
  void GetDataColumnMajor(std::vector<double>* out) const override;
  void GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const override;

  // The names of the grid's rows, in row order; as a set, each once and in byte-wise order.
  void SetRowsUsed(std::vector<std::string>* rows);
  void GetRowsUsed(std::vector<std::string>* out) const;
  void GetRowsUsed(kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>* out) const;

 private:
  std::vector<std::vector<std::string>> columns_;
  std::vector<std::string> rowsUsed_;
};

// What is asked of the host's grid. The library stores and returns it.
class STUDYSTATS_API StatsDataInput {
 public:
  // What a host does with a cell that is missing or not a number.
  enum BadItemBehavior : std::int32_t { BadItemEliminateRow = 0, BadItemEliminateColumn = 1, BadItemUseDefault = 2 };
  // The table that is to be built.
  enum DataArrayType : std::int32_t { CompleteData = 0, IncompleteData = 1, CompleteStrings = 2 };
  // The derived columns that are to be generated.
  enum DataInputDerivation : std::int32_t {
    DerivationNone = 0,
    DerivationCrossProducts = 1,
    DerivationSquares = 2,
    DerivationQuadratic = 3,  // squares and cross products
    DerivationCubes = 4,
    DerivationCubic = 5,  // every family
  };

  // Flags false and true, behaviour, kind of table and derivation 0, default value 0. Without rows: none are named.
  StatsDataInput(const std::string& gridGUID, std::int32_t sheet, const std::vector<std::string>& columns);
  StatsDataInput(const std::string& gridGUID, std::int32_t sheet, const std::vector<std::string>& columns,
                 const std::vector<std::string>& rows);
  StatsDataInput(const StatsDataInput& other);
  StatsDataInput(StatsDataInput&& other) noexcept;
  StatsDataInput& operator=(const StatsDataInput& other);
  StatsDataInput& operator=(StatsDataInput&& other) noexcept;
  ~StatsDataInput();
  StatsDataInput* Copy() const;  // the caller deletes it

  std::string GetGridGUID();
  std::int32_t GetSheet() const;
  void GetColumns(std::vector<std::string>* out) const;
  void GetRows(std::vector<std::string>* out) const;
  // The two flags mean what the host wants them to.
  void SetBehavior(bool first, bool second, BadItemBehavior badItems, DataArrayType arrayType);
  void GetBehavior(bool& first, bool& second, BadItemBehavior& badItems, DataArrayType& arrayType) const;
  DataArrayType GetArrayType();
  void SetDefaultValue(double value);  // for bad cells, when they are to be replaced
  double GetDefaultValue() const;
  void SetDerivationType(DataInputDerivation type, std::int32_t parameter);
  void GetDerivationType(DataInputDerivation& type, std::int32_t& parameter) const;

  // Which families of derived columns a derivation calls for, and how many columns they make of n source columns:
  // squares n, cubes n, cross products n(n - 1)/2, square-cross products n(n - 1), triple products n(n - 1)(n - 2)/6.
  // Any other type: no family, 0. The count wraps in 32 bits, and each division truncates the wrapped product.
  static void GetDerivationParameters(DataInputDerivation type, std::int32_t n, bool& squares, bool& cubes,
                                      bool& crossProducts, bool& squareCrossProducts, bool& tripleProducts,
                                      std::int32_t& count);

 private:
  std::string gridGUID_;
  std::int32_t sheet_;
  std::vector<std::string> columns_;
  std::vector<std::string> rows_;
  bool firstBehaviorFlag_ = false;
  bool secondBehaviorFlag_ = true;
  BadItemBehavior badItemBehavior_ = BadItemBehavior(0);
  DataArrayType arrayType_ = DataArrayType(0);
  DataInputDerivation derivationType_ = DerivationNone;
  std::int32_t derivationParameter_ = 0;
  double defaultValue_ = 0.0;
};

// What was extracted. Lists keep the order in which names were added, and repeats; every count counts all entries.
class STUDYSTATS_API StatsDataFactoryResults {
 public:
  StatsDataFactoryResults();  // sheet 1, everything else empty or 0
  StatsDataFactoryResults(const StatsDataFactoryResults& other);
  StatsDataFactoryResults(StatsDataFactoryResults&& other) noexcept;
  StatsDataFactoryResults& operator=(const StatsDataFactoryResults& other);
  StatsDataFactoryResults& operator=(StatsDataFactoryResults&& other) noexcept;
  ~StatsDataFactoryResults();
  StatsDataFactoryResults* Copy() const;  // the caller deletes it

  void SetStudyGUID(const std::string& guid);
  std::string GetStudyGUID();
  void SetSheetUsed(const std::int32_t& sheet);
  std::int32_t GetSheetUsed() const;
  void SetNumCellsEliminated(std::int32_t count);
  std::int32_t NumCellsEliminated() const;
  void SetNumCellsDefaulted(std::int32_t count);
  std::int32_t NumCellsDefaulted() const;
  void SetDerivationType(StatsDataInput::DataInputDerivation type);
  StatsDataInput::DataInputDerivation GetDerivationType();
  void SetComments(const std::string& comments);
  std::string GetComments();

  void AddToRowsRequested(const std::vector<std::string>& names);
  void AddToRowsRequested(std::string name);
  void GetRowsRequested(std::vector<std::string>* out) const;
  std::int32_t NumRowsRequested() const;

  void AddToRowsExtracted(const std::vector<std::string>& names);
  void AddToRowsExtracted(std::string name);
  void GetRowsExtracted(std::vector<std::string>* out) const;
  std::int32_t NumRowsExtracted() const;

  void AddToRowsMissing(const std::vector<std::string>& names);
  void AddToRowsMissing(std::string name);
  void GetRowsMissing(std::vector<std::string>* out) const;
  std::int32_t NumRowsMissing() const;

  void AddToRowsEliminated(const std::vector<std::string>& names);
  void AddToRowsEliminated(std::string name);
  void GetRowsEliminated(std::vector<std::string>* out) const;
  std::int32_t NumRowsEliminated() const;

  void AddToColumnsRequested(const std::vector<std::string>& names);
  void AddToColumnsRequested(std::string name);
  void GetColumnsRequested(std::vector<std::string>* out) const;
  std::string GetColumnRequested(std::int32_t index);
  std::int32_t NumColumnsRequested() const;

  void AddToColumnsExtracted(const std::vector<std::string>& names);
  void AddToColumnsExtracted(std::string name);
  void GetColumnsExtracted(std::vector<std::string>* out) const;
  std::string GetColumnExtracted(std::int32_t index);
  std::int32_t NumColumnsExtracted() const;

  void AddToColumnsMissing(const std::vector<std::string>& names);
  void AddToColumnsMissing(std::string name);
  void GetColumnsMissing(std::vector<std::string>* out) const;
  std::string GetColumnMissing(std::int32_t index);
  std::int32_t NumColumnsMissing() const;

  void AddToColumnsEliminated(const std::vector<std::string>& names);
  void AddToColumnsEliminated(std::string name);
  void GetColumnsEliminated(std::vector<std::string>* out) const;
  std::string GetColumnEliminated(std::int32_t index);
  std::int32_t NumColumnsEliminated() const;

  // One formula for each generated column.
  void AddToColumnFormulae(const std::vector<std::string>& formulae);
  void AddToColumnFormulae(std::string formula);
  void GetColumnFormulae(std::vector<std::string>* out) const;
  std::string GetColumnFormula(std::int32_t index);
  std::int32_t NumColumnsGenerated() const;

  void AddToColumnHeadings(const std::vector<std::string>& headings);
  void GetColumnHeadings(std::vector<std::string>* out) const;
  std::string GetColumnHeading(std::int32_t index);

 private:
  std::string studyGUID_;
  std::int32_t sheetUsed_ = 1;
  std::vector<std::string> rowsRequested_, rowsExtracted_, rowsMissing_, rowsEliminated_;
  std::vector<std::string> columnsRequested_, columnsExtracted_, columnsMissing_, columnsEliminated_;
  std::int32_t numCellsEliminated_ = 0;
  std::int32_t numCellsDefaulted_ = 0;
  std::vector<std::string> columnFormulae_;
  std::vector<std::string> columnHeadings_;
  StatsDataInput::DataInputDerivation derivationType_ = StatsDataInput::DerivationNone;
  std::string comments_;
};
